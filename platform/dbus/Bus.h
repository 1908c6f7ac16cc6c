#pragma once

#include <systemd/sd-bus.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace tavrel::dbus {

/// Where the system's message bus is, as the bus libraries write it. Reads the environment, so
/// no other thread may be changing it; connections are therefore opened by address.
std::string systemBusAddress();
/// The same of this session's; empty when there is none.
std::string sessionBusAddress();

struct CloseBus {
    /// Without sending what is still queued, which might take for ever.
    void operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }
};
/// A connection to a message bus, for one thread.
using Bus = std::unique_ptr<sd_bus, CloseBus>;

struct UnrefMessage {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using Message = std::unique_ptr<sd_bus_message, UnrefMessage>;

/// Begins to connect, without waiting for the bus. Null when there is none. `address` as the bus
/// libraries write it.
Bus openBus(const std::string& address);

/// A call to be sent; null when these are no names, or the connection is over.
Message newCall(sd_bus& bus, const char* service, const char* object, const char* interface,
                const char* method);

/// The same, of a service that is not started for it.
Message newCallToRunning(sd_bus& bus, const char* service, const char* object,
                         const char* interface, const char* method);

struct UnrefSlot {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
/// A call whose answer is waited for: no longer once this goes, which has to be before its bus.
using PendingCall = std::unique_ptr<sd_bus_slot, UnrefSlot>;

/// A timeout, in the library's words.
constexpr std::uint64_t forever = UINT64_MAX;

/// Has the answer to `call`, or that there is none, handled. Null when the call can't be sent.
/// `timeout` in microseconds.
PendingCall send(sd_bus& bus, const Message& call, sd_bus_message_handler_t answered,
                 void* userData, std::uint64_t timeout);

/// Has signals that match `rule` handled. Where the bus refuses, none come.
void addMatch(sd_bus& bus, const std::string& rule, sd_bus_message_handler_t handler,
              void* userData);

/// The rule for a service's appearing on the bus and going.
std::string ownerChanges(const std::string& service);

/// Handles what has arrived and sends what is due. Returns false when the connection is over.
bool process(sd_bus& bus);

/// What to poll for, and for how long.
struct Wait {
    int descriptor;
    short events;
    std::chrono::milliseconds timeout;
};
/// Before `process` has something to do, and until this time at most.
Wait nextWait(sd_bus& bus, std::chrono::steady_clock::time_point until);

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
