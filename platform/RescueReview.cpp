#include "platform/RescueReview.h"

#include <algorithm>
#include <utility>

namespace tavrel {

namespace {

bool isLastWordOfADarkDesk(DisplayMoment& moment) {
    return !moment.isCurrent() && hasUsableDisplay(moment) != true;
}

}  // namespace

bool RescueReview::canSwitch() {
    {
        const std::lock_guard lock(mutex_);
        rescues_.erase(std::this_thread::get_id());
    }
    return switch_.canSwitch();
}

ServerStatus RescueReview::setDisplayEnabled(DisplayID display, bool enabled) {
    if (enabled && isWithheld(display)) {
        return serverStatus::cannotComplete;
    }
    return switch_.setDisplayEnabled(display, enabled);
}

std::unique_ptr<DisplayMoment> RescueReview::now() {
    return noted(queries_.now());
}

std::unique_ptr<DisplayMoment> RescueReview::lately() {
    return noted(queries_.lately());
}

std::unique_ptr<DisplayMoment> RescueReview::noted(std::unique_ptr<DisplayMoment> moment) {
    const bool isDark = isLastWordOfADarkDesk(*moment);
    if (mainQueue_.isCurrent()) {
        isDecidedInSilence_ = isDark;
        return moment;
    }
    const std::lock_guard lock(mutex_);
    const auto thread = std::this_thread::get_id();
    const auto going = rescues_.find(thread);
    if (going != rescues_.end() && std::exchange(going->second.isUnderWay, false)) {
        return moment;
    }
    rescues_.erase(thread);
    if (isDark || isDecidedInSilence_) {
        rescues_.emplace(thread, Rescue{});
    }
    return moment;
}

std::unique_ptr<DisplayMoment> RescueReview::nowAfterProbing() {
    return queries_.nowAfterProbing();
}

bool RescueReview::isWithheld(DisplayID display) {
    std::unique_lock lock(mutex_);
    const auto found = rescues_.find(std::this_thread::get_id());
    if (found == rescues_.end()) {
        return false;
    }
    // No other thread touches it, and the look may take long.
    Rescue& rescue = found->second;
    lock.unlock();
    review(rescue);
    const bool isAskedAgain =
        std::find(rescue.withheld.begin(), rescue.withheld.end(), display) != rescue.withheld.end();
    rescue.isCalledOff = rescue.isCalledOff && !isAskedAgain;
    rescue.isUnderWay = true;
    if (rescue.isCalledOff) {
        rescue.withheld.push_back(display);
    }
    return rescue.isCalledOff;
}

void RescueReview::review(Rescue& rescue) {
    if (std::exchange(rescue.isReviewed, true)) {
        return;
    }
    const auto moment = queries_.nowAfterProbing();
    rescue.isCalledOff = !moment->isCurrent() || hasUsableDisplay(*moment) == true;
}

}  // namespace tavrel
