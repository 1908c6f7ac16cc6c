#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "controller/DisplayController.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/StoredModel.h"

namespace tavrel::simulation {

class WatchModel;

/// What must hold at every step, whatever happens. Keeps the first thing that did not.
class Invariants {
public:
    /// Both must outlive it.
    Invariants(SimulatedPlatform& system, EventLog& log) : system_(system), log_(log) {}

    /// From now on `controller` is the application's, and `model` says what its watch
    /// should do; both null between two sessions.
    void watch(std::shared_ptr<DisplayController> controller, WatchModel* model);

    /// To be called after each step of the simulated world.
    void check();

    /// The user's request was, or was not, accepted as it should have been.
    void checkSwitchRequest(bool accepted, bool shouldBe, const DisplayDevice& display, bool isOn);

    /// An outside hand has changed the store: what was there before counts no more.
    void forgetStore();

    /// The user's accepted switch has moved the suppression; a restoration has not.
    void noteSuppressionMovedByUser();

    /// Whether a remembered display is connected, so that it could be enabled.
    bool someRememberedIsConnected();
    bool someRememberedIsUsable();
    /// Whether the registry has been empty at some step of this very moment.
    bool storedIsOrWasEmptyNow();
    const StoredModel& stored();

    /// The application asks for `display` to be switched on.
    void noteEnableRequest(DisplayID display) { enableRequests_.insert(display); }

    void fail(const std::string& what);
    const std::optional<std::string>& violation() const { return violation_; }

private:
    void checkTexts();
    void checkAnswered();
    void checkStore();
    void checkRestoration();
    void noteRestorationStart();
    void noteRestorationEnd();
    bool isLive(DisplayID display);
    void readStoreIfChanged();

    SimulatedPlatform& system_;
    EventLog& log_;
    std::optional<std::string> violation_;

    std::shared_ptr<DisplayController> controller_;
    WatchModel* model_ = nullptr;
    std::optional<ObjectWillChange::Subscription> subscription_;
    bool fieldsMayHaveChanged_ = false;
    std::set<std::string> knownTexts_;
    std::string lastStatus_;
    std::string lastError_;

    StoredModel stored_;
    std::size_t storeGeneration_ = 0;
    std::uint64_t serverGeneration_ = 0;
    bool isUsable_ = true;

    std::optional<Delay> unusableSince_;
    Delay lastRestorationEnd_{0};
    std::optional<Delay> lastEmptyAt_;
    std::optional<Delay> restorationStart_;
    WallTime lastSuppression_ = WallTime::distantPast();
    /// What was remembered and has not been live since the running restoration started.
    std::set<DisplayID> candidates_;
    std::set<DisplayID> enableRequests_;
};

}  // namespace tavrel::simulation
