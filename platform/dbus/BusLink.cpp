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

Bus openBus(const std::optional<std::string>& address) {
    sd_bus* bus = nullptr;
    if (!address.has_value()) {
        const bool isOpen = sd_bus_open_user(&bus) >= 0;
        Bus opened(bus);
        return isOpen ? std::move(opened) : nullptr;
    }
    if (sd_bus_new(&bus) < 0) {
        return nullptr;
    }
    Bus opened(bus);
    const bool isOpen = sd_bus_set_address(bus, address->c_str()) >= 0 &&
                        sd_bus_set_bus_client(bus, 1) >= 0 && sd_bus_start(bus) >= 0;
    return isOpen ? std::move(opened) : nullptr;
}

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
