#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "controller/DisplayController.h"
#include "tests/simulated/SimulatedPlatform.h"
#include "tests/simulation/EventLog.h"
#include "tests/simulation/StoredModel.h"

namespace tavrel::simulation {

class WatchModel;

/// What must hold at every step, whatever happens. Keeps the first violation.
class Invariants {
public:
    /// Both must outlive it. What it logs begins with `who`.
    Invariants(SimulatedPlatform& system, EventLog& log, std::string who)
        : system_(system), log_(log), who_(std::move(who)) {}

    /// From now on checks this controller, and `model` says what its watch should do. Both are
    /// null between two sessions.
    void watch(std::shared_ptr<DisplayController> controller, WatchModel* model);

    /// To be called after each step of the simulated world.
    void check();
    /// The part of `check` that also holds while the main thread is busy.
    void checkStore();

    /// Fails unless the user's request was accepted, or refused, as it should have been.
    void checkSwitchRequest(bool accepted, bool shouldBe, const DisplayDevice& display, bool isOn);

    /// To be called when another program has changed the store: its former content no longer
    /// counts.
    void forgetStore();

    /// The suppression was moved by a switch of the user's, not by a restoration.
    void noteSuppressionMovedByUser();

    /// From now on a switch may take this long.
    void allowForSlowness(Delay longestSwitch) { longestSwitch_ = longestSwitch; }

    /// The main thread does nothing from here on, and has done nothing until there. Meanwhile
    /// no restoration can be asked for.
    void noteHangBegins() { isHanging_ = true; }
    void noteHangEnds();

    /// Whether a user can see the display: it is online and active, and not under a closed lid.
    bool isLive(DisplayID display);

    /// Whether any display is online and active; whether the server has both lists and names any.
    bool somethingIsOn();
    bool somethingIsListed();

    /// Whether a remembered display is connected, so that it could be enabled.
    bool someRememberedIsConnected();
    bool someRememberedIsUsable();
    /// Whether the registry is empty, or was at an earlier step of the same moment.
    bool storedIsOrWasEmptyNow();
    const StoredModel& stored();

    /// The application has asked to switch `display` on.
    void noteEnableRequest(DisplayID display) { enableRequests_.insert(display); }

    /// All that later checks depend on, as a text in which only time that passes counts.
    std::string state();

    void fail(const std::string& what);
    const std::optional<std::string>& violation() const { return violation_; }

private:
    void note(const std::string& what) { log_.add(system_.scheduler.now(), who_ + what); }
    void checkTexts();
    void checkAnswered();
    void checkRestoration();
    void noteRestorationStart();
    void noteRestorationEnd();
    bool isUnderLid(const SimulatedDisplay& display) const;
    void readStoreIfChanged();

    SimulatedPlatform& system_;
    EventLog& log_;
    const std::string who_;
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
    bool wasLidClosed_ = false;
    bool isUsable_ = true;
    Delay longestSwitch_{0};
    bool isHanging_ = false;

    std::optional<Delay> unusableSince_;
    Delay lastRestorationEnd_{0};
    std::optional<Delay> lastEmptyAt_;
    std::optional<Delay> restorationStart_;
    WallTime lastSuppression_ = WallTime::distantPast();
    /// The displays that the running restoration has to enable: remembered, and not live since
    /// it started.
    std::set<DisplayID> candidates_;
    std::set<DisplayID> enableRequests_;
};

}  // namespace tavrel::simulation
