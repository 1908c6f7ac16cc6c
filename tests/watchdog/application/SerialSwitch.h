#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/DisplaySwitch.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel::watchdog {

/// Lets several threads use a simulated server, and counts changes that are not made one at a
/// time.
class SerialSwitch : public DisplaySwitch {
public:
    explicit SerialSwitch(DisplaySwitch& inner) : inner_(inner) {}

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        overlaps_ += ++running_ > 1 ? 1 : 0;
        // Gives other threads a chance to come in between.
        std::this_thread::yield();
        ServerStatus status = serverStatus::failure;
        {
            const std::lock_guard lock(mutex_);
            status = inner_.setDisplayEnabled(display, enabled);
        }
        --running_;
        return status;
    }

    /// Whether the display is on now; `server` is the one behind this.
    bool isOn(const SimulatedWindowServer& server, DisplayID display) {
        const std::lock_guard lock(mutex_);
        return server.find(display)->enabled;
    }

    int overlaps() const { return overlaps_; }

private:
    DisplaySwitch& inner_;
    std::mutex mutex_;
    std::atomic<int> running_ = 0;
    std::atomic<int> overlaps_ = 0;
};

}  // namespace tavrel::watchdog
