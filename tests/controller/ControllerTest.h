#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "controller/DisplayController.h"
#include "registry/DisplayRegistry.h"
#include "registry/StoredDisplay.h"
#include "tests/controller/CallLog.h"
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

    explicit ControllerTest(
        SimulatedWindowServer::WhenOff whenOff = SimulatedWindowServer::WhenOff::staysOnline)
        : system(1, whenOff) {}

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

    /// The simulated one, with all that is asked of its window server in `calls`.
    Platform platform() {
        const Platform whole = system.platform();
        return {.displaySwitch = loggedSwitch,
                .queries = loggedQueries,
                .reports = whole.reports,
                .userDefaults = whole.userDefaults,
                .wallClock = whole.wallClock,
                .mainQueue = whole.mainQueue,
                .backgroundQueue = whole.backgroundQueue,
                .notificationCenter = whole.notificationCenter};
    }

    void start() { controller = DisplayController::create(platform()); }

    /// Starts with these displays connected, and lets the first refresh end.
    void startWith(const DisplayIDs& displays) {
        connect(displays);
        start();
        scheduler.settle();
        server.takeChanges();
        calls.clear();
    }

    /// Lets go of the controller. Returns what tells whether it has been destroyed.
    std::weak_ptr<DisplayController> release() {
        recording_ = {};
        return std::exchange(controller, nullptr);
    }

    /// Lets go of the controller before the jobs that were started have run: they keep it, but
    /// what they leave for the main thread to do does not.
    void expectKeptByItsJobsAlone() {
        const auto weak = release();
        EXPECT_FALSE(weak.expired());

        scheduler.runBackgroundJobs();
        EXPECT_TRUE(weak.expired());
        // Not destroyed on the job's thread, only marked for it.
        EXPECT_EQ(server.callbacks(), 1U);

        scheduler.advance(10s);
        EXPECT_EQ(server.callbacks(), 0U);
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

    /// What `read` returned at each announcement of a change while `act` ran.
    template <class Read>
    auto atEachSignal(const Read& read, const std::function<void()>& act) {
        std::vector<std::decay_t<std::invoke_result_t<Read>>> values;
        const auto subscription =
            controller->objectWillChange().subscribe([&] { values.push_back(read()); });
        act();
        return values;
    }

    /// The error text and the status.
    std::pair<std::optional<std::string>, std::string> texts() const { return {error(), status()}; }

    /// How many of the listed displays are busy.
    auto busy() const {
        const auto& displays = controller->displays();
        return std::count_if(displays.begin(), displays.end(),
                             [](const DisplayDevice& display) { return display.isBusy; });
    }

    /// Stores a registry of these displays, in this order.
    void remember(const DisplayIDs& displays) {
        std::vector<StoredDisplay> records;
        for (const DisplayID display : displays) {
            records.push_back({display, display == panel, system.wallClock.now()});
        }
        system.userDefaults.replaceFromOutside(DisplayRegistry::storageKey,
                                               *StoredFormat::encode(records));
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
    CallLog calls{scheduler.mainQueue()};
    LoggedSwitch loggedSwitch{displaySwitch, calls};
    LoggedQueries loggedQueries{server, calls};
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
