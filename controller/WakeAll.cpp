#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "controller/DisplayController.h"
#include "platform/BackgroundQueue.h"
#include "platform/DisplaySwitch.h"

namespace tavrel {

namespace {

/// Enables each display, one after the other. Returns the names of those that failed.
std::vector<std::string> wake(DisplaySwitch& displaySwitch,
                              const std::vector<DisplayDevice>& displays) {
    std::vector<std::string> failedNames;
    for (const DisplayDevice& display : displays) {
        if (!displaySwitch.canSwitch() ||
            displaySwitch.setDisplayEnabled(display.displayID(), true) != serverStatus::success) {
            failedNames.push_back(display.name());
        }
    }
    return failedNames;
}

std::string joined(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

}  // namespace

void DisplayController::wakeAll() {
    assertMainThread();
    if (displays_.empty()) {
        refresh(std::nullopt);
        return;
    }
    const std::vector<DisplayDevice> snapshot = displays_;
    for (const DisplayDevice& display : snapshot) {
        editDisplay(display.id(), [](DisplayDevice& entry) { entry.isBusy = true; });
    }
    setErrorMessage(std::nullopt);
    setStatusMessage("Waking both displays…");

    platform_.backgroundQueue.async([self = shared_from_this(), snapshot] {
        const auto failedNames = wake(self->platform_.displaySwitch, snapshot);
        self->platform_.mainQueue.async([weak = std::weak_ptr(self), snapshot, failedNames] {
            if (const auto controller = weak.lock()) {
                controller->finishWakeAll(snapshot, failedNames);
            }
        });
    });
}

void DisplayController::finishWakeAll(const std::vector<DisplayDevice>& snapshot,
                                      const std::vector<std::string>& failedNames) {
    for (const DisplayDevice& display : snapshot) {
        // By name on purpose: the error text cannot tell two displays of one name apart, so
        // when one fails, neither is shown as on.
        const bool failed =
            std::find(failedNames.begin(), failedNames.end(), display.name()) != failedNames.end();
        editDisplay(display.id(), [&](DisplayDevice& entry) {
            entry.isBusy = false;
            entry.isOn = !failed;
        });
    }
    if (failedNames.empty()) {
        setStatusMessage("Both displays are on");
        return;
    }
    setStatusMessage("Some displays couldn’t be woken");
    setErrorMessage("Couldn’t wake: " + joined(failedNames));
}

}  // namespace tavrel
