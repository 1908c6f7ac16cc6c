#include <algorithm>
#include <exception>
#include <memory>
#include <optional>
#include <string>

#include "controller/DisplayController.h"
#include "display/DisplayError.h"
#include "platform/BackgroundQueue.h"
#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel {

namespace {

std::optional<DisplayError> switchDisplay(const Platform& platform, DisplayID display, bool isOn) {
    if (!platform.displaySwitch.canSwitch()) {
        return DisplayError::lifecycleUnavailable(platform.words);
    }
    const ServerStatus status = platform.displaySwitch.setDisplayEnabled(display, isOn);
    if (status != serverStatus::success) {
        return DisplayError::lifecycleFailed(status, platform.words);
    }
    return std::nullopt;
}

}  // namespace

void DisplayController::set(const DisplayDevice& display, bool isOn) {
    assertMainThread();
    if (display.isBusy || display.isOn == isOn) {
        return;
    }
    if (!anyOtherDisplayIsLive(display) && !isOn) {
        setErrorMessage("Keep at least one display enabled so you can turn the other one back on.");
        setStatusMessage("One display must stay on");
        return;
    }
    editDisplay(display.id(), [](DisplayDevice& entry) { entry.isBusy = true; });
    suppressTopologyRestore();
    setErrorMessage(std::nullopt);
    setStatusMessage((isOn ? "Waking " : "Turning off ") + display.name() + "…");

    platform_.backgroundQueue.async([self = shared_from_this(), display, isOn] {
        const auto error = switchDisplay(self->platform_, display.displayID(), isOn);
        self->platform_.mainQueue.async([weak = std::weak_ptr(self), display, isOn, error] {
            if (const auto controller = weak.lock()) {
                controller->finishSwitch(display, isOn, error);
            }
        });
    });
}

void DisplayController::finishSwitch(const DisplayDevice& display, bool isOn,
                                     const std::optional<DisplayError>& error) {
    editDisplay(display.id(), [&](DisplayDevice& entry) {
        entry.isBusy = false;
        if (!error.has_value()) {
            entry.isOn = isOn;
        }
    });
    if (error.has_value()) {
        setErrorMessage(error->errorDescription());
        setStatusMessage("Couldn’t change " + display.name());
        return;
    }
    setStatusMessage(display.name() + " is " + (isOn ? "on" : "off"));
}

bool DisplayController::anyOtherDisplayIsLive(const DisplayDevice& display) const {
    const auto moment = platform_.queries.now();
    return std::any_of(displays_.begin(), displays_.end(), [&](const DisplayDevice& other) {
        return other.id() != display.id() && isLive(*moment, other.displayID());
    });
}

}  // namespace tavrel
