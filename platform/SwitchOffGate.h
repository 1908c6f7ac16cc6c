#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>

#include "platform/DisplaySwitch.h"

namespace tavrel {

/// A switch that can be closed to requests to switch off. At quitting, every display is
/// switched on; a request made just before must not switch one off again.
class SwitchOffGate : public DisplaySwitch {
public:
    /// `inner` must outlive it.
    explicit SwitchOffGate(DisplaySwitch& inner) : inner_(inner) {}

    /// From now on a request to switch off returns 1004 without reaching the server.
    void close();

    /// Blocks until no request to switch off is running, but no longer than `timeout`. Returns
    /// whether none is.
    bool waitUntilIdle(std::chrono::milliseconds timeout);

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
