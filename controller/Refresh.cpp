#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <variant>

#include "controller/DisplayController.h"
#include "display/DisplayIntegration.h"
#include "platform/BackgroundQueue.h"

namespace tavrel {

namespace {

using Displays = std::vector<DisplayDevice>;
using ErrorText = std::string;

std::variant<Displays, ErrorText> fetch(const Platform& platform) {
    try {
        return DisplayIntegration::fetchDisplays(platform.queries, platform.userDefaults,
                                                 platform.wallClock, platform.words);
    } catch (const std::exception& error) {
        return ErrorText(error.what());
    }
}

std::string countText(std::size_t count) {
    if (count == 2) {
        return "Both displays are ready";
    }
    return "Found " + std::to_string(count) + " display" + (count == 1 ? "" : "s");
}

}  // namespace

void DisplayController::refresh(std::optional<std::string> successMessage) {
    assertMainThread();
    if (isRefreshing_) {
        return;
    }
    setIsRefreshing(true);
    setErrorMessage(std::nullopt);

    platform_.backgroundQueue.async(
        [self = shared_from_this(), message = std::move(successMessage)] {
            self->platform_.mainQueue.async(
                [weak = std::weak_ptr(self), outcome = fetch(self->platform_), message] {
                    if (const auto controller = weak.lock()) {
                        controller->finishRefresh(outcome, message);
                    }
                });
        });
}

void DisplayController::finishRefresh(const RefreshOutcome& outcome,
                                      const std::optional<std::string>& successMessage) {
    setIsRefreshing(false);
    if (const auto* errorText = std::get_if<ErrorText>(&outcome)) {
        setErrorMessage(*errorText);
        setStatusMessage("Display control unavailable");
        return;
    }
    setDisplays(std::get<Displays>(outcome));
    setStatusMessage(successMessage.value_or(countText(displays_.size())));
}

}  // namespace tavrel
