#include "platform/dbus/Bus.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace tavrel::dbus {

namespace {

using Clock = std::chrono::steady_clock;

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

/// As a path is written in an address.
std::string escaped(const std::string& path) {
    std::string result;
    for (const char each : path) {
        if (std::isalnum(static_cast<unsigned char>(each)) != 0 ||
            std::string_view("-_/.\\*").find(each) != std::string_view::npos) {
            result += each;
        } else {
            std::array<char, 4> code{};
            std::snprintf(code.data(), code.size(), "%%%02x", static_cast<unsigned char>(each));
            result += code.data();
        }
    }
    return result;
}

/// Without it, the library ends the connection when the bus refuses to pass a signal on.
int carryOn(sd_bus_message* /*message*/, void* /*unused*/, sd_bus_error* /*error*/) {
    return 0;
}

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

std::string systemBusAddress() {
    const std::string address = variable("DBUS_SYSTEM_BUS_ADDRESS");
    return address.empty() ? "unix:path=/run/dbus/system_bus_socket" : address;
}

std::string sessionBusAddress() {
    std::string address = variable("DBUS_SESSION_BUS_ADDRESS");
    const std::string runtime = variable("XDG_RUNTIME_DIR");
    if (!address.empty() || runtime.empty()) {
        return address;
    }
    return "unix:path=" + escaped(runtime) + "/bus";
}

Bus openBus(const std::string& address) {
    sd_bus* opened = nullptr;
    if (sd_bus_new(&opened) < 0) {
        return nullptr;
    }
    Bus bus(opened);
    const bool isOpen = sd_bus_set_address(opened, address.c_str()) >= 0 &&
                        sd_bus_set_bus_client(opened, 1) >= 0 && sd_bus_start(opened) >= 0;
    return isOpen ? std::move(bus) : nullptr;
}

Message newCall(sd_bus& bus, const char* service, const char* object, const char* interface,
                const char* method) {
    sd_bus_message* message = nullptr;
    sd_bus_message_new_method_call(&bus, &message, service, object, interface, method);
    return Message(message);
}

Message newCallToRunning(sd_bus& bus, const char* service, const char* object,
                         const char* interface, const char* method) {
    Message call = newCall(bus, service, object, interface, method);
    if (call != nullptr) {
        sd_bus_message_set_auto_start(call.get(), 0);
    }
    return call;
}

PendingCall send(sd_bus& bus, const Message& call, sd_bus_message_handler_t answered,
                 void* userData, std::uint64_t timeout) {
    sd_bus_slot* slot = nullptr;
    sd_bus_call_async(&bus, &slot, call.get(), answered, userData, timeout);
    return PendingCall(slot);
}

void addMatch(sd_bus& bus, const std::string& rule, sd_bus_message_handler_t handler,
              void* userData) {
    sd_bus_add_match_async(&bus, nullptr, rule.c_str(), handler, &carryOn, userData);
}

std::string ownerChanges(const std::string& service) {
    return "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',"
           "member='NameOwnerChanged',arg0='" +
           service + "'";
}

bool process(sd_bus& bus) {
    int handled = 1;
    while (handled > 0) {
        handled = sd_bus_process(&bus, nullptr);
    }
    return handled == 0;
}

Wait nextWait(sd_bus& bus, Clock::time_point until) {
    using std::chrono::milliseconds;
    std::uint64_t libraryWants = forever;
    if (sd_bus_get_timeout(&bus, &libraryWants) > 0 && libraryWants != forever) {
        // The library counts on the clock that steady_clock is here.
        until = std::min(
            until,
            Clock::time_point(std::chrono::microseconds(static_cast<std::int64_t>(libraryWants))));
    }
    const Clock::duration left =
        std::min<Clock::duration>(until - Clock::now(), std::chrono::hours(1));
    const int events = sd_bus_get_events(&bus);
    return {.descriptor = sd_bus_get_fd(&bus),
            .events = static_cast<short>(std::max(events, 0)),
            .timeout = std::max(std::chrono::ceil<milliseconds>(left), milliseconds(0))};
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
