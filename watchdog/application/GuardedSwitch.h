#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "platform/DisplaySwitch.h"
#include "platform/MonotonicClock.h"
#include "platform/posix/WakeUp.h"
#include "watchdog/application/WatchdogSupervisor.h"

namespace tavrel::watchdog {

/// A display switch whose changes are made by the watchdog: a process that outlives this one
/// just long enough to switch on again what it had switched off. Answers what `inner` would.
///
/// Thread-safe. Changes are made one at a time, in the order they were asked for, also
/// when they are made in this process because no watchdog can run. But whoever brings a display
/// back does not wait behind a change that hangs: a request to switch on that would begin later
/// than the setup's `urgentTimeout` after it, or after the beginning of the change before it, is
/// carried out in this process at once, beside that change. It keeps its place all the same, and
/// is repeated there: so a display ends up as it was asked for last. A request to switch off the
/// same display that was still to be made, or is made only after that, answers 1004 and leaves
/// the display on.
///
/// What this cannot do: where the server itself serves nobody during the change, as an X server
/// that is grabbed, the rescue waits for the server.
class GuardedSwitch : public DisplaySwitch {
public:
    /// Has a watchdog started, after the setup's `firstStart` or when the first change or beat
    /// comes sooner, and from then on another whenever it dies. Does not wait for that; the first
    /// change does. `inner` and `queries`, about the same displays, must outlive it.
    GuardedSwitch(DisplaySwitch& inner, DisplayQueries& queries, SupervisorSetup setup);
    /// Without a goodbye before, the watchdog switches on what is off.
    ~GuardedSwitch() override;

    GuardedSwitch(const GuardedSwitch&) = delete;
    GuardedSwitch& operator=(const GuardedSwitch&) = delete;

    /// The application is all right: to be called about once a second on the thread whose
    /// hanging the watchdog is to notice. Never blocks.
    void beat();

    /// The application is about to end: from now on a watchdog that hangs is not waited for.
    /// Never blocks.
    void hurry() { supervisor_.hurry(); }

    /// See `WatchdogSupervisor`; for any thread. None waits for a change.
    void handOver(const std::vector<DisplayID>& displays) { supervisor_.handOver(displays); }
    bool isHandedOver() const { return supervisor_.isHandedOver(); }
    /// How many requests have not begun. For any thread.
    std::size_t waiting();
    /// Grows with each change that comes to an end.
    std::uint64_t changesEnded() const { return supervisor_.changesEnded() + rescuesEnded_; }

    /// Sees to it that nothing we switched off stays off, dismisses the watchdog, and returns
    /// when that has ended; see `WatchdogSupervisor`. Later changes are made in this process.
    void goodbye();

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    using Job = std::packaged_task<ServerStatus()>;
    struct Request {
        Job job;
        /// That is switched on; 0 for all other requests.
        DisplayID rescued = 0;
        bool isOvertaking = false;
    };

    std::future<ServerStatus> add(const std::shared_ptr<Request>& request);
    ServerStatus switchOn(DisplayID display);
    ServerStatus switchOff(DisplayID display);
    /// On `thread_`.
    ServerStatus switchOffUnlessRescued(DisplayID display);
    /// Whether the display has been switched on beside the changes, by a request that is waiting.
    bool isRescued(DisplayID display);
    void work();
    /// What is to be done by now. Returns false when that was the last.
    bool doWork();
    std::shared_ptr<Request> nextRequest();
    /// Blocks until there is something to do: a job, the watchdog's end, or our own; no longer
    /// than `timeout`, unless that is negative.
    void awaitWork(std::chrono::milliseconds timeout = std::chrono::milliseconds(-1)) const;

    DisplaySwitch& inner_;
    const MonotonicClock now_;
    const std::chrono::milliseconds longestWait_;
    const std::chrono::milliseconds firstStart_;
    /// Used by `thread_` only, but for what any thread may call.
    WatchdogSupervisor supervisor_;
    WakeUp wakeUp_;
    std::mutex mutex_;
    std::condition_variable begun_;
    std::deque<std::shared_ptr<Request>> waiting_;
    /// Since when a request is being carried out.
    std::optional<std::chrono::nanoseconds> busySince_;
    std::atomic<std::uint64_t> rescuesEnded_ = 0;
    bool isBeating_ = false;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace tavrel::watchdog
