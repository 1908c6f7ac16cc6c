#include <algorithm>

#include "controller/DisplayController.h"
#include "platform/DisplayQueries.h"

namespace tavrel {

void DisplayController::ensureAtLeastOneUsableDisplay() {
    assertMainThread();
    if (isAutomaticRecoveryRunning_) {
        return;
    }
    const auto& known = known_.read();
    if (!known.empty() && !anyIsLive(known)) {
        restoreSafeLayout("Lost display recovered automatically");
    }
}

bool DisplayController::isLive(DisplayMoment& moment, DisplayID display) {
    return moment.isOnline(display) && moment.isActive(display);
}

bool DisplayController::anyIsLive(const std::vector<StoredDisplay>& displays) const {
    const auto moment = platform_.queries.now();
    return std::any_of(displays.begin(), displays.end(),
                       [&](const StoredDisplay& display) { return isLive(*moment, display.id); });
}

}  // namespace tavrel
