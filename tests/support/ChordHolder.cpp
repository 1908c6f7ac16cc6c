#include "tests/support/ChordHolder.h"

#include <xcb/xcb_keysyms.h>

#include <stdexcept>

namespace tavrel::support {

ChordHolder::ChordHolder(const std::string& displayName) : connection_(displayName) {
    xcb_key_symbols_t* symbols = xcb_key_symbols_alloc(connection_.get());
    const XcbReply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols, 'w'));
    xcb_key_symbols_free(symbols);
    for (const xcb_keycode_t* code = codes.get(); code != nullptr && *code != XCB_NO_SYMBOL;
         ++code) {
        const XcbReply<xcb_generic_error_t> refused(xcb_request_check(
            connection_.get(),
            xcb_grab_key_checked(connection_.get(), 1, connection_.root(), XCB_MOD_MASK_ANY, *code,
                                 XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
        if (refused != nullptr) {
            throw std::runtime_error("the W key is somebody else's already");
        }
    }
}

}  // namespace tavrel::support
