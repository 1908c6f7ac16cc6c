#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "controller/DisplayController.h"
#include "tests/simulated/ScriptedSwitch.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "registry/DisplayRegistry.h"

namespace tavrel {

using namespace std::chrono_literals;

/// A controller on a simulated platform. Tests that want a quiet start make it with
/// `startAndSettle`, the others with `start`.
class ControllerTest : public testing::Test {
protected:
    using Changes = std::vector<std::pair<DisplayID, bool>>;

    static constexpr DisplayID panel = 5;
    static constexpr DisplayID firstExternal = 1;
    static constexpr DisplayID secondExternal = 3;

    /// Jobs that are still asleep end while everything they use is there.
    ~ControllerTest() override {
        forgetStatuses();
        controller.reset();
        scheduler.shutDown();
    }

    void connectPanel() { server.connect({.id = panel, .builtIn = true}); }
    void connectExternals() {
        server.connect({.id = firstExternal});
        server.connect({.id = secondExternal});
    }

    void start() { controller = DisplayController::create(system.platform().with(lifecycle)); }

    void startAndSettle() {
        start();
        scheduler.settle();
        server.takeChanges();
    }

    /// The listed display with this identifier, as a row holds it.
    DisplayDevice listed(DisplayID display) const {
        for (const DisplayDevice& each : controller->displays()) {
            if (each.displayID() == display) {
                return each;
            }
        }
        throw std::out_of_range("not listed");
    }

    void set(DisplayID display, bool isOn) { controller->set(listed(display), isOn); }

    /// Makes the platform forget that a display is live without any report of it.
    void switchOffSilently(DisplayID display) {
        SimulatedDisplay off = *server.find(display);
        off.enabled = false;
        server.replaceSilently(off);
    }

    /// From now on every status text shown is kept, in order, each once in a row.
    void recordStatuses() {
        statuses_ = {status()};
        recording_ = controller->objectWillChange().subscribe([this] { noteStatus(); });
    }

    /// To be called before the last owner lets go of the controller.
    void forgetStatuses() { recording_ = {}; }

    /// The status texts shown since `recordStatuses`, the one at its time first.
    std::vector<std::string> statuses() {
        noteStatus();
        return statuses_;
    }

    const std::string& status() const { return controller->statusMessage(); }
    std::optional<std::string> error() const { return controller->errorMessage(); }

    SimulatedPlatform system;
    SimulatedScheduler& scheduler = system.scheduler;
    SimulatedWindowServer& server = system.windowServer;
    ScriptedSwitch lifecycle{server, scheduler};
    std::shared_ptr<DisplayController> controller;

private:
    void noteStatus() {
        if (statuses_.back() != status()) {
            statuses_.push_back(status());
        }
    }

    std::vector<std::string> statuses_;
    ObjectWillChange::Subscription recording_;
};

}  // namespace tavrel
