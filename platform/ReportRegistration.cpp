#include "platform/ReportRegistration.h"

namespace tavrel {

ServerStatus ReportRegistration::add(DisplayReconfigurationCallback callback, void* userInfo) {
    const std::lock_guard lock(mutex_);
    if (registered_.has_value()) {
        return serverStatus::cannotComplete;
    }
    registered_ = Pair{callback, userInfo};
    return serverStatus::success;
}

ServerStatus ReportRegistration::remove(DisplayReconfigurationCallback callback, void* userInfo) {
    const std::lock_guard lock(mutex_);
    if (registered_ != Pair{callback, userInfo}) {
        return serverStatus::illegalArgument;
    }
    registered_.reset();
    return serverStatus::success;
}

void ReportRegistration::report(DisplayID display, std::uint32_t flags) {
    const std::lock_guard lock(mutex_);
    // A copy, since the callback may end its own registration.
    if (const std::optional<Pair> registered = registered_) {
        registered->callback(display, flags, registered->userInfo);
    }
}

}  // namespace tavrel
