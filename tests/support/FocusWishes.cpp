#include "tests/support/FocusWishes.h"

#include <string_view>

namespace tavrel::support {

FocusWishes::FocusWishes(const std::string& displayName)
    : connection_(displayName), own_(xcb_generate_id(connection_.get())) {
    xcb_connection_t* xcb = connection_.get();
    constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
    const XcbReply<xcb_intern_atom_reply_t> atom(
        xcb_intern_atom_reply(xcb, xcb_intern_atom(xcb, 0, name.size(), name.data()), nullptr));
    activeWindow_ = atom->atom;
    constexpr std::uint32_t changesOfProperties = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(xcb, 0, own_, connection_.root(), 0, 0, 1, 1, 0, XCB_WINDOW_CLASS_INPUT_ONLY,
                      XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &changesOfProperties);
    constexpr std::uint32_t wishes = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, connection_.root(), XCB_CW_EVENT_MASK, &wishes);
    connection_.roundTrip();
}

const std::vector<FocusWishes::Wish>& FocusWishes::heard() {
    readEvents();
    return heard_;
}

xcb_timestamp_t FocusWishes::timeNow() {
    xcb_change_property(connection_.get(), XCB_PROP_MODE_APPEND, own_, XCB_ATOM_WM_NAME,
                        XCB_ATOM_STRING, 8, 0, nullptr);
    readEvents();
    return latest_;
}

void FocusWishes::readEvents() {
    connection_.roundTrip();
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        const int kind = event->response_type & 0x7f;
        if (kind == XCB_PROPERTY_NOTIFY) {
            latest_ = reinterpret_cast<const xcb_property_notify_event_t&>(*event).time;
        } else if (kind == XCB_CLIENT_MESSAGE) {
            const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(*event);
            if (message.type == activeWindow_) {
                heard_.push_back({message.window, message.data.data32[1]});
            }
        }
    }
}

}  // namespace tavrel::support
