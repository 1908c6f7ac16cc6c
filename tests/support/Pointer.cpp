#include "tests/support/Pointer.h"

#include <xcb/xtest.h>

#include <stdexcept>

namespace tavrel::support {

void requireXTest(const XConnection& connection) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_test_id);
    if (extension == nullptr || extension->present == 0) {
        throw std::runtime_error("the X server has no XTEST");
    }
}

Pointer::Pointer(const std::string& displayName) : connection_(displayName) {
    requireXTest(connection_);
}

void Pointer::moveTo(int x, int y) const {
    fake(XCB_MOTION_NOTIFY, 0, x, y);
}

void Pointer::press() const {
    fake(XCB_BUTTON_PRESS, XCB_BUTTON_INDEX_1, 0, 0);
}

void Pointer::release() const {
    fake(XCB_BUTTON_RELEASE, XCB_BUTTON_INDEX_1, 0, 0);
}

void Pointer::click(int x, int y) const {
    moveTo(x, y);
    press();
    release();
}

void Pointer::fake(unsigned type, unsigned detail, int x, int y) const {
    xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(type),
                        static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, connection_.root(),
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
    connection_.roundTrip();
}

}  // namespace tavrel::support
