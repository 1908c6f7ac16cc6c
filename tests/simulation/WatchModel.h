#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "controller/DisplayController.h"
#include "platform/ReconfigurationReports.h"
#include "tests/simulated/SimulatedPlatform.h"

namespace tavrel::simulation {

class Invariants;

/// A second implementation of what the reports of one session should lead to. It gets every
/// report just after the controller does, and checks just after each moment at which the
/// controller should have acted.
class WatchModel {
public:
    /// All must outlive it. Registers itself after the controller.
    WatchModel(SimulatedPlatform& system, MainQueue& mainQueue, ReconfigurationReports& reports,
               std::shared_ptr<DisplayController> controller, Invariants& invariants);
    ~WatchModel();

    WatchModel(const WatchModel&) = delete;
    WatchModel& operator=(const WatchModel&) = delete;

    /// Whether the debounced recovery is to start at this very moment.
    bool recoveryIsDueNow() const;

    /// The main thread has done nothing until now: what was due meanwhile is due now.
    void noteHang();

    /// A restoration has started: no later report cancels the pending recovery.
    void noteRestorationStart() { stored_.reset(); }

    /// All that later checks depend on, but for the checks that are queued.
    std::string state() const;

private:
    struct Recovery {
        Delay due;
        bool isCancelled = false;
    };

    static void receive(DisplayID display, std::uint32_t flags, void* userInfo);
    void handle(std::uint32_t flags);
    void expectRecovery();
    void expectCheck();

    SimulatedPlatform& system_;
    MainQueue& mainQueue_;
    ReconfigurationReports& reports_;
    std::shared_ptr<DisplayController> controller_;
    Invariants& invariants_;
    std::vector<std::shared_ptr<Recovery>> recoveries_;
    std::shared_ptr<Recovery> stored_;
    /// Points to null for tasks that are left from a former session.
    std::shared_ptr<WatchModel*> alive_;
};

}  // namespace tavrel::simulation
