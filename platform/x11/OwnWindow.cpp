#include "platform/x11/OwnWindow.h"

#include <cstring>
#include <optional>
#include <string_view>

#include "platform/x11/connection/ServerLink.h"

namespace tavrel::x11 {

namespace {

/// The server's time, which only its events tell.
std::optional<xcb_timestamp_t> timeNow(Connection& connection) {
    xcb_connection_t* xcb = connection.get();
    const xcb_window_t own = xcb_generate_id(xcb);
    constexpr std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    // It is never mapped, and goes with the connection.
    xcb_create_window(xcb, 0, own, connection.root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    // To add nothing to a property counts as a change of it.
    xcb_change_property(xcb, XCB_PROP_MODE_APPEND, own, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 0,
                        nullptr);
    connection.roundTrip();
    while (const auto event = connection.nextEvent()) {
        if (eventNumber(*event) == XCB_PROPERTY_NOTIFY) {
            xcb_property_notify_event_t change{};
            std::memcpy(&change, event.get(), sizeof change);
            return change.time;
        }
    }
    return std::nullopt;
}

}  // namespace

bool requestFocus(xcb_window_t window, const X11ServerOptions& options) {
    // The main thread asks, and a server that is silent must not stop it.
    ServerLink link(options);
    Connection* connection = link.connection();
    if (connection == nullptr) {
        return false;
    }
    constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
    const auto atom = connection->reply<xcb_intern_atom_reply_t>(
        xcb_intern_atom(connection->get(), 0, name.size(), name.data()).sequence);
    const auto time = timeNow(*connection);
    if (atom == nullptr || !time.has_value()) {
        return false;
    }
    constexpr std::uint32_t asAnApplication = 1;
    xcb_client_message_event_t wish{};
    wish.response_type = XCB_CLIENT_MESSAGE;
    wish.format = 32;
    wish.window = window;
    wish.type = atom->atom;
    wish.data.data32[0] = asAnApplication;
    wish.data.data32[1] = *time;
    xcb_send_event(connection->get(), 0, connection->root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&wish));
    return connection->roundTrip();
}

void setExposedColor(xcb_connection_t* connection, xcb_window_t window, std::uint32_t color) {
    xcb_change_window_attributes(connection, window, XCB_CW_BACK_PIXEL, &color);
}

}  // namespace tavrel::x11
