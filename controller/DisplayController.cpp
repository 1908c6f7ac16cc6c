#include "controller/DisplayController.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <utility>

#include "controller/WakeAllNotification.h"
#include "platform/ReconfigurationReports.h"

namespace tavrel {

namespace {
constexpr auto safetyInterval = std::chrono::seconds(1);
}  // namespace

std::shared_ptr<DisplayController> DisplayController::create(const Platform& platform) {
    // Whichever thread releases the controller last, the main thread destroys it.
    const auto destroyOnMainThread = [&main = platform.mainQueue](DisplayController* last) {
        // Held as void, so that `weak_from_this` cannot give out a new owner.
        std::shared_ptr<void> owner(static_cast<void*>(last), [](void* owned) {
            delete static_cast<DisplayController*>(owned);
        });
        if (!main.isCurrent()) {
            main.async([owner = std::move(owner)] {});
        }
    };
    std::shared_ptr<DisplayController> controller(new DisplayController(platform),
                                                  destroyOnMainThread);
    controller->start();
    return controller;
}

DisplayController::DisplayController(const Platform& platform)
    : platform_(platform), known_(platform.userDefaults), statusMessage_("Finding your displays…") {
    assertMainThread();
}

void DisplayController::start() {
    const std::weak_ptr<DisplayController> weak = weak_from_this();
    MainQueue& main = platform_.mainQueue;

    wakeObserver_ = platform_.notificationCenter.addObserver(wakeAllDisplays, [weak, &main] {
        main.async([weak] {
            if (const auto controller = weak.lock()) {
                controller->wakeAll();
            }
        });
    });

    displayCallbackRegistered_ = platform_.reports.registerCallback(displayReconfigurationCallback,
                                                                    this) == serverStatus::success;

    safetyTimer_ = main.repeat(safetyInterval, [weak, &main] {
        main.async([weak] {
            if (const auto controller = weak.lock()) {
                controller->ensureAtLeastOneUsableDisplay();
            }
        });
    });

    refresh(std::nullopt);
}

DisplayController::~DisplayController() {
    assertMainThread();
    if (topologyRecoveryWorkItem_ != nullptr) {
        topologyRecoveryWorkItem_->cancel();
    }
    if (safetyTimer_ != nullptr) {
        safetyTimer_->invalidate();
    }
    if (displayCallbackRegistered_) {
        platform_.reports.removeCallback(displayReconfigurationCallback, this);
    }
    if (wakeObserver_.has_value()) {
        platform_.notificationCenter.removeObserver(*wakeObserver_);
    }
}

const std::vector<DisplayDevice>& DisplayController::displays() const {
    assertMainThread();
    return displays_;
}

void DisplayController::setDisplays(std::vector<DisplayDevice> displays) {
    assertMainThread();
    objectWillChange_.send();
    displays_ = std::move(displays);
}

bool DisplayController::isRefreshing() const {
    assertMainThread();
    return isRefreshing_;
}

void DisplayController::setIsRefreshing(bool isRefreshing) {
    assertMainThread();
    objectWillChange_.send();
    isRefreshing_ = isRefreshing;
}

const std::string& DisplayController::statusMessage() const {
    assertMainThread();
    return statusMessage_;
}

void DisplayController::setStatusMessage(std::string statusMessage) {
    assertMainThread();
    objectWillChange_.send();
    statusMessage_ = std::move(statusMessage);
}

const std::optional<std::string>& DisplayController::errorMessage() const {
    assertMainThread();
    return errorMessage_;
}

void DisplayController::setErrorMessage(std::optional<std::string> errorMessage) {
    assertMainThread();
    objectWillChange_.send();
    errorMessage_ = std::move(errorMessage);
}

bool DisplayController::displayCallbackRegistered() const {
    assertMainThread();
    return displayCallbackRegistered_;
}

bool DisplayController::isAutomaticRecoveryRunning() const {
    assertMainThread();
    return isAutomaticRecoveryRunning_;
}

WallTime DisplayController::suppressTopologyRestoreUntil() const {
    assertMainThread();
    return suppressTopologyRestoreUntil_;
}

void DisplayController::assertMainThread() const {
    assert(platform_.mainQueue.isCurrent());
}

void DisplayController::editDisplay(const std::string& id,
                                    const std::function<void(DisplayDevice&)>& edit) {
    const auto found = std::find_if(displays_.begin(), displays_.end(),
                                    [&](const auto& display) { return display.id() == id; });
    if (found != displays_.end()) {
        objectWillChange_.send();
        edit(*found);
    }
}

}  // namespace tavrel
