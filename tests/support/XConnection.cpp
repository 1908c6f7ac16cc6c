#include "tests/support/XConnection.h"

#include <stdexcept>

namespace tavrel::support {

XConnection::XConnection(const std::string& displayName)
    : connection_(xcb_connect(displayName.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) {
        xcb_disconnect(connection_);
        throw std::runtime_error("no X server at " + displayName);
    }
    screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
}

XConnection::~XConnection() {
    xcb_disconnect(connection_);
}

xcb_window_t XConnection::root() const {
    return screen_->root;
}

void XConnection::roundTrip() const {
    const XcbReply<xcb_get_input_focus_reply_t> reply(
        xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
    if (!reply) {
        throw std::runtime_error("the X server has gone");
    }
}

}  // namespace tavrel::support
