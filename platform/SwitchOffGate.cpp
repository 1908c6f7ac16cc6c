#include "platform/SwitchOffGate.h"

namespace tavrel {

void SwitchOffGate::close() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
}

bool SwitchOffGate::waitUntilIdle(std::chrono::milliseconds timeout) {
    std::unique_lock lock(mutex_);
    return ended_.wait_for(lock, timeout, [this] { return running_ == 0; });
}

ServerStatus SwitchOffGate::setDisplayEnabled(DisplayID display, bool enabled) {
    if (enabled) {
        return inner_.setDisplayEnabled(display, true);
    }
    {
        const std::lock_guard lock(mutex_);
        if (isClosed_) {
            return serverStatus::cannotComplete;
        }
        ++running_;
    }
    const ServerStatus status = inner_.setDisplayEnabled(display, false);
    {
        const std::lock_guard lock(mutex_);
        --running_;
    }
    ended_.notify_all();
    return status;
}

}  // namespace tavrel
