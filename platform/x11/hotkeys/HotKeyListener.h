#pragma once

#include <functional>

#include "platform/HotKeys.h"
#include "platform/x11/connection/EventThread.h"
#include "platform/x11/hotkeys/ChordGrabs.h"
#include "platform/x11/hotkeys/KeyPressFilter.h"

namespace tavrel::x11 {

/// Claims a chord, one at a time, and listens for it, on a thread of its own.
class HotKeyListener final : private EventThread::Client {
public:
    /// `pressed` is called on that thread, once for each press of the claimed chord.
    HotKeyListener(std::function<void()> pressed, const X11ServerOptions& options);

    /// Both block until the server has answered. Not to be called from inside `pressed`. For
    /// when `claim` returns false see `ChordGrabs::claim`.
    bool claim(const HotKeyRegistration& hotKey);
    void release();

private:
    void connected(Connection& connection) override;
    void received(Connection& connection, const xcb_generic_event_t& event) override;
    void settled(Connection& connection) override;
    void handleKey(const xcb_generic_event_t& event);

    std::function<void()> pressed_;
    // All these belong to the thread.
    ChordGrabs grabs_;
    KeyPressFilter filter_;
    bool keyboardChanged_ = false;
    /// Last, so that it ends before anything it uses.
    EventThread thread_;
};

}  // namespace tavrel::x11
