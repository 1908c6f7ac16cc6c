#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/LidAwareDisplays.h"
#include "tests/simulated/FaultyQueries.h"
#include "tests/simulated/FaultyReports.h"
#include "tests/simulated/FaultySwitch.h"
#include "tests/simulated/SilentQueries.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/Application.h"
#include "tests/simulation/Event.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/ServerSwitch.h"

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
    /// A laptop with two monitors, and helpers. The seed decides everything.
    explicit World(std::uint64_t seed);
    /// Without helpers: what becomes of these is not part of `state`.
    ///
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
    /// The first thing that did not hold for a copy of the application.
    std::optional<std::string> violation() const;

private:
    Room room();
    void begin(const Setting& setting);
    void launch(Application& application);
    void quit(Application& application);
    void quitAndRestart();
    void check();
    void advance(Delay duration);
    void carryOut(const Event& event);
    /// Whose user it was; the first one's, unless there are two.
    Application& chosen(const Event& event);
    void forgetStore();
    void allowForSlowness(Delay longest);
    void plug(const SimulatedDisplay& display) { system_.windowServer.connect(display); }
    void switchAllOff();
    void startFaults(const Event& event);
    void slowServer(const Event& event);
    void hangApplication(Application& application, Delay duration);
    void watchdogLooks();
    void setSilent(bool isSilent);
    void startOneFault(Event::Kind kind);
    void stopFaults();
    void corruptRegistry(std::uint32_t variant);
    void endAllFaults();
    void converge();
    void rescueWithoutHelper(const Event& event);
    void expectUsableWithin(Delay duration);

    SimulatedPlatform system_;
    EventLog log_;
    SilentQueries lastWord_{system_.windowServer};
    LidAwareQueries queriesWithLid_{lastWord_, system_.lid};
    LidAwareReports reportsWithLid_{system_.windowServer, system_.lid};
    ServerSwitch serverSwitch_{system_.windowServer, system_.lid};
    FaultySwitch displaySwitch_;
    FaultyReports reports_;
    FaultyQueries queries_;
    std::optional<Event::Kind> fault_;

    Application first_;
    /// Not running for most of the time.
    Application second_;
};

}  // namespace tavrel::simulation
