#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "controller/DisplayController.h"
#include "registry/DisplayRegistry.h"
#include "tests/simulated/ScriptedSwitch.h"
#include "tests/simulated/SimulatedPlatform.h"

namespace tavrel {

using namespace std::chrono_literals;

/// A controller on a simulated platform. Tests that want a quiet start make it with
/// `startWith`, the others with `start`.
class ControllerTest : public testing::Test {
protected:
    using DisplayIDs = std::vector<DisplayID>;
    using Changes = std::vector<std::pair<DisplayID, bool>>;

    static constexpr DisplayID panel = 5;
    static constexpr DisplayID firstExternal = 1;
    static constexpr DisplayID secondExternal = 3;
    /// In the order of the list.
    inline static const DisplayIDs allThree{panel, firstExternal, secondExternal};

    static constexpr const char* restoring = "Display setup changed — restoring a safe layout…";
    static constexpr const char* restored = "Display setup changed — available screens restored";
    static constexpr const char* recovered = "Lost display recovered automatically";
    static constexpr const char* needsAttention = "Display recovery needs attention";

    /// Jobs that are still asleep end while everything they use is there.
    ~ControllerTest() override {
        release();
        scheduler.shutDown();
    }

    void connect(const DisplayIDs& displays) {
        for (const DisplayID display : displays) {
            server.connect({.id = display, .builtIn = display == panel});
        }
    }

    void start() { controller = DisplayController::create(system.platform().with(displaySwitch)); }

    /// Starts with these displays connected, and lets the first refresh end.
    void startWith(const DisplayIDs& displays) {
        connect(displays);
        start();
        scheduler.settle();
        server.takeChanges();
    }

    /// Lets go of the controller. Returns what tells whether it has been destroyed.
    std::weak_ptr<DisplayController> release() {
        recording_ = {};
        return std::exchange(controller, nullptr);
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

    /// Takes displays out of the layout without any report of it.
    void switchOffSilently(const DisplayIDs& displays) {
        for (const DisplayID display : displays) {
            SimulatedDisplay off = *server.find(display);
            off.enabled = false;
            server.replaceSilently(off);
        }
    }

    void unplugSilently(DisplayID display) {
        server.replaceSilently({.id = display, .connected = false});
    }

    /// What `server.takeChanges` returns when exactly these were switched on, in this order.
    static Changes switchedOn(const DisplayIDs& displays) { return changes(displays, true); }
    static Changes switchedOff(const DisplayIDs& displays) { return changes(displays, false); }

    /// From now on every status text shown is kept, in order, each once in a row.
    void recordStatuses() {
        statuses_ = {status()};
        recording_ = controller->objectWillChange().subscribe([this] { noteStatus(); });
    }

    /// The status texts shown since `recordStatuses`, the one at its time first.
    std::vector<std::string> statuses() {
        noteStatus();
        return statuses_;
    }

    /// How often the controller announced a change while `act` ran.
    int signalsDuring(const std::function<void()>& act) {
        int signals = 0;
        const auto subscription = controller->objectWillChange().subscribe([&] { ++signals; });
        act();
        return signals;
    }

    /// The status at each change that came after an error text was set while `act` ran.
    std::vector<std::string> statusesBesideAnError(const std::function<void()>& act) {
        std::vector<std::string> texts;
        const auto subscription = controller->objectWillChange().subscribe([&] {
            if (error().has_value()) {
                texts.push_back(status());
            }
        });
        act();
        return texts;
    }

    const std::string& status() const { return controller->statusMessage(); }
    std::optional<std::string> error() const { return controller->errorMessage(); }

    SimulatedPlatform system;
    SimulatedScheduler& scheduler = system.scheduler;
    SimulatedWindowServer& server = system.windowServer;
    ScriptedSwitch displaySwitch{server, scheduler};
    std::shared_ptr<DisplayController> controller;

private:
    static Changes changes(const DisplayIDs& displays, bool enabled) {
        Changes changes;
        for (const DisplayID display : displays) {
            changes.emplace_back(display, enabled);
        }
        return changes;
    }

    void noteStatus() {
        if (statuses_.back() != status()) {
            statuses_.push_back(status());
        }
    }

    std::vector<std::string> statuses_;
    ObjectWillChange::Subscription recording_;
};

}  // namespace tavrel
