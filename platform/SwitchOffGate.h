#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "platform/DisplayLifecycle.h"

namespace tavrel {

/// A lifecycle in which, from a given moment on, no display goes off any more: what is
/// switched on at quitting stays on, whatever was asked for just before.
class SwitchOffGate : public DisplayLifecycle {
public:
    /// `inner` must outlive it.
    explicit SwitchOffGate(DisplayLifecycle& inner) : inner_(inner) {}

    /// From now on a request to switch off answers 1004 without reaching the server.
    void close();

    /// Returns when no request from before `close` is running, however long that takes.
    void waitUntilIdle();

    /// Whether `waitUntilIdle` would return at once.
    bool isIdle();

    bool canControlDisplays() override { return inner_.canControlDisplays(); }
    ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                std::uint32_t* count) override {
        return inner_.getDisplayList(maxCount, displays, count);
    }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    DisplayLifecycle& inner_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t running_ = 0;
    bool isClosed_ = false;
};

}  // namespace tavrel
