#pragma once

#include <string>
#include <vector>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// Hears what a window manager does: which window is to have the focus, and as of when.
class FocusWishes {
public:
    struct Wish {
        xcb_window_t window = XCB_NONE;
        xcb_timestamp_t time = XCB_CURRENT_TIME;
    };

    /// Throws std::runtime_error when the server does not answer.
    explicit FocusWishes(const std::string& displayName);

    /// All that have been made since this was created.
    const std::vector<Wish>& heard();
    /// The server's time.
    xcb_timestamp_t timeNow();

private:
    void readEvents();

    XConnection connection_;
    xcb_window_t own_ = XCB_NONE;
    xcb_atom_t activeWindow_ = XCB_ATOM_NONE;
    std::vector<Wish> heard_;
    xcb_timestamp_t latest_ = XCB_CURRENT_TIME;
};

}  // namespace tavrel::support
