#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "controller/DisplayController.h"
#include "platform/NotificationCenter.h"
#include "platform/RescueReview.h"
#include "platform/SwitchOffGate.h"
#include "tests/simulated/FaultyQueries.h"
#include "tests/simulated/FaultyReports.h"
#include "tests/simulated/FaultySwitch.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/GuardedLine.h"
#include "tests/simulation/Invariants.h"
#include "tests/simulation/ServerSwitch.h"
#include "tests/simulation/WatchModel.h"

namespace tavrel::simulation {

/// What all copies of the application have in common. All must outlive them.
struct Room {
    SimulatedPlatform& system;
    ServerSwitch& server;
    FaultySwitch& displaySwitch;
    /// What the application asks, and what its helper and supervisor do.
    DisplayQueries& queries;
    DisplayQueries& helpersQueries;
    ReconfigurationReports& reports;
    EventLog& log;
};

/// A copy of the application's core with its user, launched and quit again and again. Two copies
/// have nothing in common but the room: each has its own main thread, window, helper.
class Application {
public:
    using Process = SimulatedScheduler::Process;

    /// Without a helper it switches by itself.
    Application(const Room& room, Process process, bool hasHelper);
    ~Application();

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    void launch();
    void quit();
    /// Lets go of the controller, as if the process had ended without doing anything more.
    void end();
    bool isRunning() const { return controller_ != nullptr; }

    DisplayController& controller() { return *controller_; }
    Invariants& invariants() { return invariants_; }
    const Invariants& invariants() const { return invariants_; }
    WatchModel& watchModel() { return *watchModel_; }
    void pressHotKey() { hotKeys_.press(); }
    /// Flips a switch in the window; `row` and `dice` decide which and how.
    void flipSwitch(std::uint32_t row, std::uint32_t dice);
    void flipAllSwitches();

    /// Moves time on while its main thread is blocked; see `SimulatedScheduler`.
    bool blockMain(Delay limit, const std::function<bool()>& done);

    void stopHelper(Stop stop);
    bool helperIsStopped() const { return guarded_ != nullptr && guarded_->helperIsStopped(); }

private:
    Platform platform();
    void letHelperGo();
    void checkThatAllIsOn(const StoredModel& remembered);

    const Room room_;
    const Process process_;
    const bool hasHelper_;
    SimulatedHotKeys hotKeys_;
    NotificationCenter notificationCenter_;
    Invariants invariants_;

    // From launch to quit.
    std::unique_ptr<GuardedLine> guarded_;
    std::unique_ptr<SwitchOffGate> gate_;
    std::unique_ptr<RescueReview> review_;
    std::unique_ptr<DisplaySwitch> noted_;
    std::unique_ptr<AppDelegate> delegate_;
    std::shared_ptr<DisplayController> controller_;
    std::unique_ptr<WatchModel> watchModel_;
};

}  // namespace tavrel::simulation
