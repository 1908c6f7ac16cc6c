#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>

#include "platform/HotKeys.h"
#include "platform/x11/connection/EventThread.h"
#include "platform/x11/hotkeys/ChordGrabs.h"
#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

/// Claims a chord, one at a time, and listens for it, on a thread of its own. A chord that it
/// does not get is tried for again at each change of the keyboard, and every two seconds.
class HotKeyListener final : private EventThread::Client {
public:
    /// Called on that thread.
    struct Handlers {
        /// Once for each press of the claimed chord.
        std::function<void()> pressed;
        /// After each change of `isHeld`.
        std::function<void()> heldChanged;
    };

    HotKeyListener(Handlers handlers, const X11ServerOptions& options);

    /// Both block until the server has answered. Not to be called from inside a handler. For
    /// when `claim` returns false see `ChordGrabs::claim`.
    bool claim(const HotKeyRegistration& hotKey);
    void release();

    /// Whether the claimed chord reaches us. From any thread.
    bool isHeld() const { return isHeld_; }

private:
    void connected(Connection& connection) override;
    void received(Connection& connection, const xcb_generic_event_t& event) override;
    void settled(Connection& connection) override;
    std::optional<std::chrono::milliseconds> settlesAgainAfter() const override;
    void handleKey(const xcb_generic_event_t& event);
    void publishHeld();

    Handlers handlers_;
    std::atomic<bool> isHeld_ = false;
    // All these belong to the thread.
    ChordGrabs grabs_;
    KeyPressFilter filter_;
    bool keyboardChanged_ = false;
    /// Last, so that it ends before anything it uses.
    EventThread thread_;
};

}  // namespace tavrel::x11
