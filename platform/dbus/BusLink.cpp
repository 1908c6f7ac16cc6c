#include "platform/dbus/BusLink.h"

#include <algorithm>
#include <cstdint>

namespace tavrel::dbus {

namespace {

using Clock = std::chrono::steady_clock;

/// Works off what has arrived, until the bus has said hello. False when it hasn't in time.
bool isReady(sd_bus* bus, Clock::time_point deadline) {
    for (;;) {
        const int handled = sd_bus_process(bus, nullptr);
        if (handled < 0 || sd_bus_is_open(bus) <= 0) {
            return false;
        }
        if (sd_bus_is_ready(bus) > 0) {
            return true;
        }
        const auto left =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
        if (left.count() <= 0) {
            return false;
        }
        if (handled == 0) {
            sd_bus_wait(bus, static_cast<std::uint64_t>(left.count()));
        }
    }
}

}  // namespace

sd_bus* BusLink::bus(std::chrono::milliseconds timeout) {
    const auto deadline = Clock::now() + timeout;
    if (bus_ != nullptr && !isReady(bus_.get(), deadline)) {
        bus_.reset();
    }
    if (bus_ == nullptr) {
        bus_ = openBus(address_);
        if (bus_ != nullptr && !isReady(bus_.get(), deadline)) {
            bus_.reset();
        }
    }
    return bus_.get();
}

}  // namespace tavrel::dbus
