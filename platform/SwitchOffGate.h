#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "platform/DisplaySwitch.h"

namespace tavrel {

/// A switch by which, from a given moment on, no display goes off any more: what is switched
/// on at quitting stays on, whatever was asked for just before.
class SwitchOffGate : public DisplaySwitch {
public:
    /// `inner` must outlive it.
    explicit SwitchOffGate(DisplaySwitch& inner) : inner_(inner) {}

    /// From now on a request to switch off answers 1004 without reaching the server.
    void close();

    /// Returns when no request from before `close` is running, however long that takes.
    void waitUntilIdle();

    /// Whether `waitUntilIdle` would return at once.
    bool isIdle();

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    DisplaySwitch& inner_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::size_t running_ = 0;
    bool isClosed_ = false;
};

}  // namespace tavrel
