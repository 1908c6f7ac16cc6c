#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "platform/ServerTimeout.h"
#include "platform/dbus/Bus.h"
#include "platform/gnome/DisplayConfig.h"

namespace tavrel {

/// Which compositor, and how long to wait for its answers.
struct GnomeOptions {
    /// As the bus libraries write it; empty when there is none.
    std::string busAddress = dbus::sessionBusAddress();
    /// How long it may take over each answer.
    std::chrono::milliseconds timeout = serverTimeout;
};

namespace gnome {

/// Where the compositor is on the bus.
inline constexpr const char* service = "org.gnome.Mutter.DisplayConfig";
inline constexpr const char* object = "/org/gnome/Mutter/DisplayConfig";
inline constexpr const char* interface = "org.gnome.Mutter.DisplayConfig";

/// A question for all there is to know, to be sent. Null when there is no memory for it.
dbus::Message stateQuestion(sd_bus& bus);
/// What the answer says. std::nullopt when it is of another kind, names a mode or a place that
/// none can have, or a monitor that it doesn't list.
std::optional<MonitorState> readState(sd_bus_message* answer);

/// The compositor of a GNOME session, over the message bus. Never starts one.
class BusDisplayConfig final : public DisplayConfig {
public:
    explicit BusDisplayConfig(const GnomeOptions& options)
        : link_(options.busAddress), timeout_(options.timeout) {}

    Reading read() override;
    bool isAllowed() override;
    Reply apply(const Configuration& configuration, Method method) override;

private:
    struct Called {
        Reply reply = Reply::none;
        dbus::Message answer = {};
    };
    Called call(sd_bus* bus, sd_bus_message* question);

    dbus::BusLink link_;
    const std::chrono::milliseconds timeout_;
};

}  // namespace gnome
}  // namespace tavrel
