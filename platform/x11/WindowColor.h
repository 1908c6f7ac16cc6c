#pragma once

#include <xcb/xproto.h>

#include <cstdint>

namespace tavrel::x11 {

/// Has the server fill what it exposes of a window with a colour, 0xRRGGBB, until somebody paints
/// it. Sent with what is sent next over the connection, which belongs to the caller.
void setExposedColor(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color);

}  // namespace tavrel::x11
