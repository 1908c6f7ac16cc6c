#include <algorithm>

#include "controller/DisplayController.h"
#include "platform/DisplayQueries.h"

namespace tavrel {

void DisplayController::ensureAtLeastOneUsableDisplay() {
    restoreUnlessUsable(&DisplayQueries::lately);
}

void DisplayController::checkForLostDisplay() {
    restoreUnlessUsable(&DisplayQueries::now);
}

void DisplayController::restoreUnlessUsable(Ask ask) {
    assertMainThread();
    if (isAutomaticRecoveryRunning_) {
        return;
    }
    const auto& known = known_.read();
    if (!known.empty() && !anyIsLive(known, *(platform_.queries.*ask)())) {
        restoreSafeLayout("Lost display recovered automatically");
    }
}

bool DisplayController::isLive(DisplayMoment& moment, DisplayID display) {
    return moment.isOnline(display) && moment.isActive(display);
}

bool DisplayController::anyIsLive(const std::vector<StoredDisplay>& displays,
                                  DisplayMoment& moment) {
    return std::any_of(displays.begin(), displays.end(),
                       [&](const StoredDisplay& display) { return isLive(moment, display.id); });
}

}  // namespace tavrel
