#include "tests/platform/x11/hotkeys/FocusedWindow.h"

#include <xcb/xcb_keysyms.h>

#include <cstring>
#include <memory>

namespace tavrel {

namespace {

constexpr int kind(const xcb_generic_event_t& event) {
    return event.response_type & 0x7f;
}

}  // namespace

FocusedWindow::FocusedWindow(const std::string& displayName)
    : connection_(displayName), window_(xcb_generate_id(connection_.get())) {
    xcb_connection_t* xcb = connection_.get();
    const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_EXPOSURE;
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window_, connection_.root(), 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);
    xcb_map_window(xcb, window_);
    xcb_flush(xcb);
    for (bool shown = false; !shown;) {
        const support::XcbReply<xcb_generic_event_t> event(xcb_wait_for_event(xcb));
        shown = event == nullptr || kind(*event) == XCB_EXPOSE;
    }
    xcb_set_input_focus(xcb, XCB_INPUT_FOCUS_PARENT, window_, XCB_CURRENT_TIME);
    connection_.roundTrip();
}

void FocusedWindow::takeEvents() {
    connection_.roundTrip();
    while (
        const support::XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if (kind(*event) == XCB_KEY_PRESS) {
            xcb_key_press_event_t press{};
            std::memcpy(&press, event.get(), sizeof press);
            ++presses_[press.detail];
        }
    }
}

int FocusedWindow::presses(xcb_keysym_t symbol) {
    takeEvents();
    const std::unique_ptr<xcb_key_symbols_t, decltype(&xcb_key_symbols_free)> symbols(
        xcb_key_symbols_alloc(connection_.get()), &xcb_key_symbols_free);
    const support::XcbReply<xcb_keycode_t> codes(
        xcb_key_symbols_get_keycode(symbols.get(), symbol));
    return codes == nullptr ? 0 : presses_[*codes];
}

}  // namespace tavrel
