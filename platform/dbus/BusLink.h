#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace tavrel::dbus {

struct UnrefMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

struct CloseBus {
    /// Without sending what is still queued, which might take for ever.
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
using Bus = std::unique_ptr<sd_bus, CloseBus>;

/// Starts a connection to the bus of this address, as the bus libraries write it; std::nullopt
/// for the session's. Null when there is no such bus. Doesn't wait for its answer.
Bus openBus(const std::optional<std::string>& address);

/// Keeps one connection to a message bus that may be missing, go away and come back.
///
/// For one thread. No call blocks for longer than it is told.
class BusLink {
public:
    explicit BusLink(std::optional<std::string> address) : address_(std::move(address)) {}

    /// The connection, made anew if needed; null when there is none. Blocks at most for
    /// `timeout`. Valid until the next call.
    sd_bus* bus(std::chrono::milliseconds timeout);

private:
    const std::optional<std::string> address_;
    Bus bus_;
};

}  // namespace tavrel::dbus
