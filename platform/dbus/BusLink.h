#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "platform/dbus/Bus.h"

namespace tavrel::dbus {

/// Keeps one connection to a message bus that may be missing, go away and come back.
///
/// For one thread. No call blocks for longer than it is told.
class BusLink {
public:
    /// `address` as in `openBus`.
    explicit BusLink(std::string address) : address_(std::move(address)) {}

    /// The connection, made anew if needed; null when there is none. Blocks at most for
    /// `timeout`. Valid until the next call.
    sd_bus* bus(std::chrono::milliseconds timeout);

private:
    const std::string address_;
    Bus bus_;
};

}  // namespace tavrel::dbus
