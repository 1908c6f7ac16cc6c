#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "app/AppDelegate.h"
#include "controller/DisplayController.h"
#include "platform/SwitchOffGate.h"
#include "tests/simulated/FaultyQueries.h"
#include "tests/simulated/FaultyReports.h"
#include "tests/simulated/FaultySwitch.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/Event.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/Invariants.h"
#include "tests/simulation/WatchModel.h"

namespace tavrel::simulation {

/// The application's core on a desk with a laptop and monitors, with a user and other
/// programs. One seed decides everything.
class World {
public:
    explicit World(std::uint64_t seed);
    ~World();

    World(const World&) = delete;
    World& operator=(const World&) = delete;

    /// Lets the event's gap pass, then carries it out.
    void apply(const Event& event);

    Delay now() const { return system_.scheduler.now(); }
    std::uint64_t steps() const { return system_.scheduler.steps(); }
    const EventLog& log() const { return log_; }
    const std::optional<std::string>& violation() const { return invariants_.violation(); }

private:
    void launch();
    void quit();
    void advance(Delay duration);
    void carryOut(const Event& event);
    void userSwitch(const Event& event);
    void plug(const SimulatedDisplay& display) { system_.windowServer.connect(display); }
    void switchAllOff();
    void startFaults(const Event& event);
    void stopFaults();
    void corruptRegistry(std::uint32_t variant);
    void converge();
    Platform platform();

    SimulatedPlatform system_;
    EventLog log_;
    Invariants invariants_{system_, log_};
    FaultySwitch displaySwitch_;
    FaultyReports reports_;
    FaultyQueries queries_;

    // One session of the application.
    std::unique_ptr<SwitchOffGate> gate_;
    std::unique_ptr<AppDelegate> delegate_;
    std::shared_ptr<DisplayController> controller_;
    std::unique_ptr<WatchModel> watchModel_;
};

}  // namespace tavrel::simulation
