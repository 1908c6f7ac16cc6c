#include <algorithm>
#include <chrono>
#include <memory>

#include "controller/DisplayController.h"
#include "platform/BackgroundQueue.h"
#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "registry/DisplayRegistry.h"

namespace tavrel {

namespace {

using namespace std::chrono_literals;

/// Time for the server to enable the displays it was asked to.
constexpr Delay verificationDelay = 450ms;

}  // namespace

void DisplayController::restoreSafeLayout(const std::string& successMessage) {
    assertMainThread();
    if (isAutomaticRecoveryRunning_) {
        return;
    }
    auto candidates = DisplayRegistry::knownDisplays(platform_.userDefaults);
    std::stable_sort(candidates.begin(), candidates.end(), DisplayRegistry::comesBefore);
    if (candidates.empty()) {
        refresh(std::nullopt);
        return;
    }
    isAutomaticRecoveryRunning_ = true;
    suppressTopologyRestore();
    topologyRecoveryWorkItem_ = nullptr;
    setErrorMessage(std::nullopt);
    setStatusMessage("Display setup changed — restoring a safe layout…");

    platform_.backgroundQueue.async([self = shared_from_this(), candidates, successMessage] {
        auto moment = self->platform_.queries.now();
        for (const StoredDisplay& candidate : candidates) {
            if (!isLive(*moment, candidate.id)) {
                self->platform_.displaySwitch.setDisplayEnabled(candidate.id, true);
                moment = self->platform_.queries.now();
            }
        }
        self->platform_.mainQueue.asyncAfter(
            verificationDelay, [weak = std::weak_ptr(self), candidates, successMessage] {
                if (const auto controller = weak.lock()) {
                    controller->verifyRestoration(candidates, successMessage);
                }
            });
    });
}

void DisplayController::verifyRestoration(const std::vector<StoredDisplay>& candidates,
                                          const std::string& successMessage) {
    isAutomaticRecoveryRunning_ = false;
    if (anyIsLive(candidates, *platform_.queries.now())) {
        refresh(successMessage);
        return;
    }
    setErrorMessage(
        "No usable display could be restored automatically. Reconnect a monitor, then press " +
        platform_.words.wakeChord + ".");
    setStatusMessage("Display recovery needs attention");
    refresh(std::nullopt);
}

}  // namespace tavrel
