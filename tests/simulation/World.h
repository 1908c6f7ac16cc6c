#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/AppDelegate.h"
#include "controller/DisplayController.h"
#include "platform/LidAwareDisplays.h"
#include "platform/RescueReview.h"
#include "platform/SwitchOffGate.h"
#include "tests/simulated/FaultyQueries.h"
#include "tests/simulated/FaultyReports.h"
#include "tests/simulated/FaultySwitch.h"
#include "tests/simulated/SilentQueries.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/Event.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/Invariants.h"
#include "tests/simulation/WatchModel.h"

namespace tavrel::simulation {

/// What does not change during the life of a world.
struct Setting {
    SimulatedWindowServer::WhenOff whenOff;
    bool hasPrivateList;
    /// Those that are plugged in at first.
    std::vector<SimulatedDisplay> displays;
    /// What a switch takes before its effect and again after it, until faults stop.
    std::chrono::milliseconds switchDelay{0};
};

/// The application's core on a desk with a laptop and monitors, with a user and other
/// programs.
class World {
public:
    /// A laptop with two monitors. The seed decides everything.
    explicit World(std::uint64_t seed);
    /// `chooser` decides in which order work runs, and must outlive it. The outcome of faults
    /// that are not certain is always the same.
    World(const Setting& setting, Chooser& chooser);
    ~World();

    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Lets the event's gap pass, then carries it out.
    void apply(const Event& event);

    /// Everything that what happens from now on depends on, as a text in which only time that
    /// passes counts: what two worlds with the same text do under the same events differs in
    /// the time of day, and in the texts shown to the user.
    ///
    /// Work that waits and is not described by its code is described by its entry in `origins`,
    /// under its number: whatever it may have seen or computed follows from that.
    std::string state(const std::map<std::uint64_t, std::string>& origins);

    /// The numbers of the work that needs an origin, in ascending order.
    std::vector<std::uint64_t> workToDescribe() const;

    const SimulatedWindowServer& windowServer() const { return system_.windowServer; }
    /// The fault that has been chosen, while it lasts.
    std::optional<Event::Kind> fault() const { return fault_; }

    Delay now() const { return system_.scheduler.now(); }
    std::uint64_t steps() const { return system_.scheduler.steps(); }
    const EventLog& log() const { return log_; }
    const std::optional<std::string>& violation() const { return invariants_.violation(); }

private:
    void begin(const Setting& setting);
    void launch();
    void quit();
    void advance(Delay duration);
    /// Moves time on while only background jobs run; see `SimulatedScheduler`.
    bool blockMain(Delay limit, const std::function<bool()>& done);
    void carryOut(const Event& event);
    void userSwitch(const Event& event);
    void plug(const SimulatedDisplay& display) { system_.windowServer.connect(display); }
    void switchAllOff();
    void startFaults(const Event& event);
    void slowServer(const Event& event);
    void hangApplication(Delay duration);
    void watchdogLooks();
    void setSilent(bool isSilent);
    void startOneFault(Event::Kind kind);
    void stopFaults();
    void corruptRegistry(std::uint32_t variant);
    void converge();
    Platform platform();

    SimulatedPlatform system_;
    EventLog log_;
    Invariants invariants_{system_, log_};
    SilentQueries lastWord_{system_.windowServer};
    LidAwareQueries queriesWithLid_{lastWord_, system_.lid};
    LidAwareReports reportsWithLid_{system_.windowServer, system_.lid};
    FaultySwitch displaySwitch_;
    FaultyReports reports_;
    FaultyQueries queries_;
    std::optional<Event::Kind> fault_;

    // One session of the application.
    std::unique_ptr<SwitchOffGate> gate_;
    std::unique_ptr<RescueReview> review_;
    std::unique_ptr<DisplaySwitch> noted_;
    std::unique_ptr<AppDelegate> delegate_;
    std::shared_ptr<DisplayController> controller_;
    std::unique_ptr<WatchModel> watchModel_;
};

}  // namespace tavrel::simulation
