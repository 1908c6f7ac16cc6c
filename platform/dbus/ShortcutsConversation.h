#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/dbus/Bus.h"

namespace tavrel::dbus {

/// One connection to a session's message bus, over which a portal is asked for one global
/// shortcut: `org.freedesktop.portal.GlobalShortcuts`, versions 1 and 2. As long as the
/// connection lasts, the shortcut does.
///
/// The portal may not be there, come, go, answer late, never, or with no. A portal that comes is
/// asked anew; a user who has said no is not asked again. An application that no sandbox names
/// says first who it is, where the portal can be told (`org.freedesktop.host.portal.Registry`,
/// since 1.19.4).
///
/// For one thread. Nothing here blocks, whatever the bus and the portal do.
class ShortcutsConversation {
public:
    struct Shortcut {
        std::string id;
        std::string description;
        /// As freedesktop.org writes shortcuts: "CTRL+ALT+LOGO+w".
        std::string preferredTrigger;
    };

    /// `pressed` runs on the thread, in `serve`.
    ShortcutsConversation(const std::string& address, std::string applicationId, Shortcut shortcut,
                          std::function<void()> pressed);
    ShortcutsConversation(const ShortcutsConversation&) = delete;
    ShortcutsConversation& operator=(const ShortcutsConversation&) = delete;

    bool serve();
    Wait nextWait() const;

    /// What the user has bound, in the portal's words; std::nullopt while that is nothing.
    const std::optional<std::string>& trigger() const { return trigger_; }

private:
    using Clock = std::chrono::steady_clock;
    enum class Step { idle, introducing, creating, binding, bound };

    void begin();
    void end();
    void createSession();
    void bind();
    /// Sends `call`; its answer goes to `answered`, unless something else begins before.
    void send(const Message& call, sd_bus_message_handler_t answered, std::uint64_t timeout);
    Message newPortalCall(const char* interface, const char* method) const;
    std::string newToken(const char* kind);
    void takeResponse(sd_bus_message& message);
    void takeShortcuts(sd_bus_message& message);

    static int ownerChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int introduced(sd_bus_message* message, void* self, sd_bus_error* error);
    static int requested(sd_bus_message* message, void* self, sd_bus_error* error);
    static int responded(sd_bus_message* message, void* self, sd_bus_error* error);
    static int activated(sd_bus_message* message, void* self, sd_bus_error* error);
    static int shortcutsChanged(sd_bus_message* message, void* self, sd_bus_error* error);
    static int closed(sd_bus_message* message, void* self, sd_bus_error* error);

    const std::string applicationId_;
    const Shortcut shortcut_;
    const std::function<void()> pressed_;
    Step step_ = Step::idle;
    bool isRefused_ = false;
    unsigned tokens_ = 0;
    /// The end of the path of the request that is under way.
    std::string requestToken_;
    std::string session_;
    std::optional<std::string> trigger_;
    Clock::time_point nextBegin_ = Clock::time_point::max();
    Bus bus_;
    /// The call that waits for its answer. Goes before the bus.
    PendingCall pending_;
};

}  // namespace tavrel::dbus
