#include "tests/support/Keyboard.h"

#include <xcb/xtest.h>

#include <stdexcept>

#include "tests/support/Pointer.h"

namespace tavrel::support {

namespace {

struct SymbolsFree {
    void operator()(xcb_key_symbols_t* symbols) const { xcb_key_symbols_free(symbols); }
};

}  // namespace

Keyboard::Keyboard(const std::string& displayName) : connection_(displayName) {
    requireXTest(connection_);
}

void Keyboard::press(xcb_keysym_t key) const {
    fake(XCB_KEY_PRESS, key);
}

void Keyboard::release(xcb_keysym_t key) const {
    fake(XCB_KEY_RELEASE, key);
}

void Keyboard::tap(xcb_keysym_t key) const {
    press(key);
    release(key);
}

void Keyboard::chord(const std::vector<xcb_keysym_t>& keys) const {
    for (const xcb_keysym_t each : keys) {
        press(each);
    }
    for (auto each = keys.rbegin(); each != keys.rend(); ++each) {
        release(*each);
    }
}

void Keyboard::fake(unsigned type, xcb_keysym_t key) const {
    // The layout is read each time, because tests change it.
    const std::unique_ptr<xcb_key_symbols_t, SymbolsFree> symbols(
        xcb_key_symbols_alloc(connection_.get()));
    const XcbReply<xcb_keycode_t> codes(xcb_key_symbols_get_keycode(symbols.get(), key));
    if (!codes || *codes == XCB_NO_SYMBOL) {
        throw std::runtime_error("no key of the current layout carries symbol " +
                                 std::to_string(key));
    }
    xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(type), *codes,
                        XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    connection_.roundTrip();
}

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
            throw std::runtime_error("another program holds the W key already");
        }
    }
}

}  // namespace tavrel::support
