#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "tests/simulated/SimulatedScheduler.h"
#include "tests/simulation/SimulatedHelper.h"
#include "watchdog/application/WatchdogSupervisor.h"

namespace tavrel::simulation {

/// What `watchdog::GuardedSwitch` is on real threads, in simulated time: the real supervisor with
/// a helper that can be stopped, and before it the same line of requests. One at a time is carried
/// out; a request to switch on that would have to wait for too long is made beside the others, and
/// again in its turn.
class GuardedLine : public DisplaySwitch {
public:
    /// `inner` makes the changes, of the helper and of the application itself. All must outlive it.
    GuardedLine(DisplaySwitch& inner, DisplayQueries& queries, SimulatedScheduler& scheduler);

    /// From now on the helper that runs is stopped there, or goes on. Those that take its place
    /// are not.
    void stopHelper(Stop stop) { *stop_ = stop; }
    bool helperIsStopped() const { return *stop_ != Stop::nowhere; }

    /// As the real one's.
    void hurry() { supervisor_.hurry(); }
    void handOver(const std::vector<DisplayID>& displays) { supervisor_.handOver(displays); }
    void goodbye() { supervisor_.goodbye(); }

    /// How long a main thread has waited in all, for which no simulated time has passed.
    Delay waitedInVain() const { return waitedInVain_; }
    bool isIdle() const { return !busySince_.has_value() && waiting_.empty(); }

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    struct Request {
        /// That is switched on; 0 for a request to switch off.
        DisplayID rescued = 0;
        bool isOvertaking = false;
    };
    using Place = std::shared_ptr<Request>;

    ServerStatus switchOn(DisplayID display);
    ServerStatus switchOff(DisplayID display);
    ServerStatus carryOut(const Place& place, DisplayID display, bool enabled);
    Place queueUp(DisplayID rescued);
    bool isNext(const Place& place) const;
    void awaitTurn(const Place& place);
    bool isRescued(DisplayID display) const;
    Delay now() const { return scheduler_.now() + waitedInVain_; }
    void wait(std::chrono::milliseconds time);

    DisplaySwitch& inner_;
    SimulatedScheduler& scheduler_;
    Delay waitedInVain_{0};
    std::shared_ptr<Stop> stop_;
    watchdog::WatchdogSupervisor supervisor_;
    std::deque<Place> waiting_;
    std::optional<Delay> busySince_;
    Delay lastBeat_{0};
};

}  // namespace tavrel::simulation
