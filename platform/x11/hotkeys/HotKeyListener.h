#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>

#include "platform/HotKeys.h"
#include "platform/x11/connection/EventThread.h"
#include "platform/x11/hotkeys/KeyChord.h"
#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

/// The one chord claimed at a server. Its keys are grabbed on every root window, so that no
/// other client, and no window of ours, gets them: all of them, or none while one is refused.
/// To be used by one thread.
class ChordGrabs {
public:
    /// Claims a chord, for which `renew` then tries. Returns false, with nothing changed, while
    /// one is claimed already, and for a chord that no keyboard has.
    bool claim(const HotKeyRegistration& hotKey);
    /// Gives the chord up and blocks until others can have it. Without a connection, the server
    /// has taken it back already.
    void release(Connection* connection);

    /// Makes what is grabbed fit the claimed chord and the keyboard. To be called with each new
    /// connection, when the keyboard may have changed, and again and again while `isMissing`:
    /// nobody tells us when another client lets go of the chord.
    void renew(Connection& connection, bool isNewConnection);

    bool isHeld() const { return !held_.empty(); }
    /// Whether there is a chord to try for: claimed, and not held.
    bool isMissing() const { return claimed_.has_value() && held_.empty(); }

    /// Whether a key with exactly these modifier bits is the chord.
    bool holds(Keycode key, std::uint16_t modifiers) const {
        return held_.count({key, modifiers}) != 0;
    }

private:
    void grab(Connection& connection, std::set<KeyGrab> wanted);
    void ungrab(Connection& connection);

    std::optional<HotKeyRegistration> claimed_;
    std::set<KeyGrab> held_;
};

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
