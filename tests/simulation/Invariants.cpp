#include "tests/simulation/Invariants.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "registry/DisplayRegistry.h"
#include "tests/simulation/Texts.h"
#include "tests/simulation/WatchModel.h"

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;

/// The longest time without a usable display and without a restoration.
constexpr Delay longestWithoutRestoration = 1s;
/// Five displays, each delayed twice, and the verification.
constexpr Delay longestRestoration = 10s;
/// Five displays, each slow before and after, behind one that was slow already.
constexpr int slowSwitches = 12;
constexpr double retention = 2'592'000;

}  // namespace

void Invariants::watch(std::shared_ptr<DisplayController> controller, WatchModel* model) {
    subscription_.reset();
    model_ = model;
    controller_ = std::move(controller);
    unusableSince_.reset();
    restorationStart_.reset();
    lastRestorationEnd_ = system_.scheduler.now();
    lastSuppression_ = WallTime::distantPast();
    lastStatus_.clear();
    lastError_.clear();
    if (controller_ != nullptr) {
        subscription_ =
            controller_->objectWillChange().subscribe([this] { fieldsMayHaveChanged_ = true; });
        fieldsMayHaveChanged_ = true;
    }
}

void Invariants::check() {
    if (violation_.has_value()) {
        return;
    }
    checkStore();
    if (controller_ == nullptr) {
        return;
    }
    if (fieldsMayHaveChanged_) {
        fieldsMayHaveChanged_ = false;
        checkTexts();
    }
    checkAnswered();
    checkRestoration();
}

void Invariants::checkTexts() {
    const std::string& status = controller_->statusMessage();
    const std::string error = controller_->errorMessage().value_or("");
    if (status != lastStatus_ || error != lastError_) {
        note("says \"" + status + "\" / \"" + error + "\"");
        lastStatus_ = status;
        lastError_ = error;
    }
    if (status.empty()) {
        fail("the status text is empty");
    }
    if (!knownTexts_.contains(status)) {
        if (!isKnownStatus(status)) {
            fail("a status nobody asked for: " + status);
        }
        knownTexts_.insert(status);
    }
    if (!error.empty() && !knownTexts_.contains("error " + error)) {
        if (!isKnownError(controller_->errorMessage())) {
            fail("an error nobody asked for: " + error);
        }
        knownTexts_.insert("error " + error);
    }
}

void Invariants::checkAnswered() {
    if (system_.scheduler.pendingBackgroundJobs() != 0 ||
        system_.scheduler.pendingMainTasks() != 0) {
        return;
    }
    for (const DisplayDevice& display : controller_->displays()) {
        if (display.isBusy) {
            fail(display.name() + " is busy though the platform has answered everything");
        }
    }
    if (controller_->isRefreshing()) {
        fail("a refresh is running though the platform has answered everything");
    }
}

void Invariants::readStoreIfChanged() {
    if (storeGeneration_ != system_.userDefaults.generation()) {
        storeGeneration_ = system_.userDefaults.generation();
        stored_ = readStored(system_.userDefaults.data(DisplayRegistry::storageKey))
                      .value_or(StoredModel{});
        serverGeneration_ = ~std::uint64_t{0};
    }
    if (serverGeneration_ != system_.windowServer.generation() ||
        wasLidClosed_ != system_.lid.isClosed()) {
        serverGeneration_ = system_.windowServer.generation();
        wasLidClosed_ = system_.lid.isClosed();
        isUsable_ = std::any_of(stored_.begin(), stored_.end(),
                                [this](const auto& record) { return isLive(record.first); });
        // A restoration may skip one that has come back meanwhile.
        std::erase_if(candidates_, [this](DisplayID display) { return isLive(display); });
    }
}

void Invariants::checkStore() {
    if (storeGeneration_ == system_.userDefaults.generation()) {
        return;
    }
    // Only the application's own writes: after all others `forgetStore` is called.
    const StoredModel before = stored_;
    const auto now = readStored(system_.userDefaults.data(DisplayRegistry::storageKey));
    if (!now.has_value()) {
        fail("the stored registry does not decode");
        return;
    }
    const double time = system_.wallClock.now().sinceReferenceDate;
    for (const auto& [display, lastSeenAt] : before) {
        if (time - lastSeenAt <= retention && !now->contains(display)) {
            fail("display " + std::to_string(display) + " is missing from the registry");
        }
    }
    for (const SimulatedDisplay& display : system_.windowServer.desk()) {
        const auto record = now->find(display.id);
        if (system_.windowServer.now()->isOnline(display.id) && !isUnderLid(display) &&
            (record == now->end() || std::abs(record->second - time) > 1e-6)) {
            fail("display " + std::to_string(display.id) + " is online but not noted as seen");
        }
    }
    note("stores " + std::to_string(now->size()) + " records");
    readStoreIfChanged();
}

void Invariants::checkRestoration() {
    readStoreIfChanged();
    if (isHanging_) {
        return;
    }
    const Delay now = system_.scheduler.now();
    const bool running = controller_->isAutomaticRecoveryRunning();
    const WallTime suppression = controller_->suppressTopologyRestoreUntil();

    if (running && !restorationStart_.has_value()) {
        noteRestorationStart();
    } else if (running && suppression != lastSuppression_) {
        fail("a restoration started while one was running");
    } else if (running &&
               now - *restorationStart_ > longestRestoration + slowSwitches * longestSwitch_) {
        fail("a restoration never ends");
    } else if (!running && restorationStart_.has_value()) {
        noteRestorationEnd();
    }
    lastSuppression_ = suppression;

    if (stored_.empty()) {
        lastEmptyAt_ = now;
    }
    if (stored_.empty() || isUsable_) {
        unusableSince_.reset();
        return;
    }
    if (!unusableSince_.has_value()) {
        unusableSince_ = now;
        note("nothing usable");
    }
    if (!running &&
        now - std::max(*unusableSince_, lastRestorationEnd_) > longestWithoutRestoration) {
        fail("nothing usable, and no restoration");
    }
}

void Invariants::noteRestorationStart() {
    const Delay now = system_.scheduler.now();
    restorationStart_ = now;
    note("restoration starts");
    if (isUsable_ && !model_->recoveryIsDueNow()) {
        fail("a restoration that nothing asked for");
    }
    model_->noteRestorationStart();
    enableRequests_.clear();
    candidates_.clear();
    for (const auto& [display, lastSeenAt] : stored_) {
        if (!isLive(display)) {
            candidates_.insert(display);
        }
    }
}

void Invariants::noteRestorationEnd() {
    lastRestorationEnd_ = system_.scheduler.now();
    restorationStart_.reset();
    note("restoration ends");
    for (const DisplayID display : candidates_) {
        if (!enableRequests_.contains(display)) {
            fail("a restoration left out display " + std::to_string(display));
        }
    }
}

bool Invariants::isUnderLid(const SimulatedDisplay& display) const {
    return display.builtIn && system_.lid.isClosed();
}

bool Invariants::isLive(DisplayID display) {
    const SimulatedDisplay* there = system_.windowServer.find(display);
    return system_.windowServer.isLive(display) && !isUnderLid(*there);
}

bool Invariants::somethingIsOn() {
    const auto& desk = system_.windowServer.desk();
    return std::any_of(desk.begin(), desk.end(), [this](const SimulatedDisplay& display) {
        return system_.windowServer.isLive(display.id);
    });
}

bool Invariants::somethingIsListed() {
    const auto moment = system_.windowServer.now();
    const auto online = moment->onlineDisplays();
    return online && !moment->allDisplays().value_or(*online).empty();
}

void Invariants::noteHangEnds() {
    isHanging_ = false;
    const Delay now = system_.scheduler.now();
    readStoreIfChanged();
    if (unusableSince_.has_value()) {
        unusableSince_ = now;
    }
    if (restorationStart_.has_value()) {
        restorationStart_ = now;
    }
}

void Invariants::checkSwitchRequest(bool accepted, bool shouldBe, const DisplayDevice& display,
                                    bool isOn) {
    if (accepted != shouldBe) {
        fail("switching " + display.name() + (isOn ? " on" : " off") +
             (accepted ? " was accepted" : " was refused"));
    }
}

void Invariants::forgetStore() {
    storeGeneration_ = system_.userDefaults.generation();
    stored_ =
        readStored(system_.userDefaults.data(DisplayRegistry::storageKey)).value_or(StoredModel{});
    serverGeneration_ = ~std::uint64_t{0};
}

void Invariants::noteSuppressionMovedByUser() {
    lastSuppression_ = controller_->suppressTopologyRestoreUntil();
}

const StoredModel& Invariants::stored() {
    readStoreIfChanged();
    return stored_;
}

bool Invariants::storedIsOrWasEmptyNow() {
    return stored().empty() || lastEmptyAt_ == system_.scheduler.now();
}

bool Invariants::someRememberedIsUsable() {
    readStoreIfChanged();
    return isUsable_;
}

bool Invariants::someRememberedIsConnected() {
    return std::any_of(stored().begin(), stored().end(), [this](const auto& record) {
        const SimulatedDisplay* display = system_.windowServer.find(record.first);
        return display != nullptr && display->connected && !isUnderLid(*display);
    });
}

void Invariants::fail(const std::string& what) {
    if (!violation_.has_value()) {
        violation_ = what;
        note("VIOLATION: " + what);
    }
}

}  // namespace tavrel::simulation
