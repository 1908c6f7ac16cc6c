#pragma once

#include <xcb/xproto.h>

#include <cstdint>

#include "platform/x11/connection/Connection.h"

namespace tavrel::x11 {

// What an X server is asked about a window of ours, and the toolkit does not ask it.

/// Asks the window manager to give `window` the focus, as a wish of this moment.
///
/// Window managers that guard the focus ignore a wish that is older than the last key pressed in
/// another window (EWMH 1.5, _NET_ACTIVE_WINDOW), and an application that the user has not
/// touched for a while knows no newer time: so the server is asked for it.
///
/// Blocks until the server has passed the wish on, or for the options' timeout while it is silent,
/// at most twice. Returns false when it cannot be reached or does not answer in time; without a
/// window manager nobody hears of it.
bool requestFocus(xcb_window_t window, const X11ServerOptions& options = {});

/// Has the server fill what it exposes of a window with a colour, 0xRRGGBB, until somebody paints
/// it. Sent with what is sent next over the connection, which belongs to the caller.
void setExposedColor(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color);

}  // namespace tavrel::x11
