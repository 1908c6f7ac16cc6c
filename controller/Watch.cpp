#include <chrono>
#include <memory>

#include "controller/DisplayController.h"
#include "platform/ReconfigurationReports.h"

namespace tavrel {

namespace {

using namespace std::chrono_literals;

/// Time for a switch to settle: a check made too early could see the layout half changed.
constexpr Delay lostDisplayCheckDelay = 350ms;
/// A dock reports its monitors one after the other; this is to outlast the pauses in between.
constexpr Delay debounceDelay = 600ms;
constexpr double suppressionSeconds = 2.0;

}  // namespace

void displayReconfigurationCallback(DisplayID display, std::uint32_t flags, void* userInfo) {
    if (userInfo == nullptr) {
        return;
    }
    static_cast<DisplayController*>(userInfo)->hopToMainThread(display, flags);
}

void DisplayController::hopToMainThread(DisplayID display, std::uint32_t flags) {
    // Null while the last owner is releasing it: then nobody needs the report any more.
    if (auto self = weak_from_this().lock()) {
        platform_.mainQueue.async([self = std::move(self), display, flags] {
            self->handleDisplayReconfiguration(display, flags);
        });
    }
}

void DisplayController::handleDisplayReconfiguration(DisplayID /*display*/, std::uint32_t flags) {
    assertMainThread();
    if ((flags & displayChange::beginConfiguration) != 0) {
        return;
    }
    const bool addedOrRemoved = (flags & (displayChange::add | displayChange::remove)) != 0;
    if (addedOrRemoved && platform_.wallClock.now() >= suppressTopologyRestoreUntil_) {
        scheduleTopologyRecovery();
        return;
    }
    platform_.mainQueue.asyncAfter(lostDisplayCheckDelay, [weak = weak_from_this()] {
        if (const auto controller = weak.lock()) {
            controller->checkForLostDisplay();
        }
    });
}

void DisplayController::suppressTopologyRestore() {
    suppressTopologyRestoreUntil_ = platform_.wallClock.now() + suppressionSeconds;
}

void DisplayController::scheduleTopologyRecovery() {
    assertMainThread();
    if (topologyRecoveryWorkItem_ != nullptr) {
        topologyRecoveryWorkItem_->cancel();
    }
    topologyRecoveryWorkItem_ = std::make_shared<WorkItem>([weak = weak_from_this()] {
        if (const auto controller = weak.lock()) {
            controller->restoreSafeLayout("Display setup changed — available screens restored");
        }
    });
    asyncAfter(platform_.mainQueue, debounceDelay, topologyRecoveryWorkItem_);
}

}  // namespace tavrel
