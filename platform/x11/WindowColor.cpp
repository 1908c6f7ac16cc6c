#include "platform/x11/WindowColor.h"

namespace tavrel::x11 {

void setExposedColor(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color) {
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXEL, &color);
}

}  // namespace tavrel::x11
