#pragma once

#include <xcb/xcb.h>

#include <map>
#include <string>

#include "tests/support/XConnection.h"

namespace tavrel {

/// Another program's window that has the keyboard focus and counts the keys it gets.
class FocusedWindow {
public:
    /// Returns when it is shown and has the focus.
    explicit FocusedWindow(const std::string& displayName);

    /// How often it has been given a press of the key that carries this symbol, repeats of a
    /// held key included.
    int presses(xcb_keysym_t symbol);

private:
    void takeEvents();

    support::XConnection connection_;
    xcb_window_t window_;
    std::map<xcb_keycode_t, int> presses_;
};

}  // namespace tavrel
