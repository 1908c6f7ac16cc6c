#include "platform/x11/hotkeys/HotKeyListener.h"

#include <cstring>
#include <future>
#include <utility>

#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

HotKeyListener::HotKeyListener(std::function<void()> pressed, const X11ServerOptions& options)
    : pressed_(std::move(pressed)), thread_(options, *this) {}

bool HotKeyListener::claim(const HotKeyRegistration& hotKey) {
    std::promise<bool> claimed;
    thread_.post([&](Connection* connection) {
        claimed.set_value(connection != nullptr && grabs_.claim(*connection, hotKey));
    });
    return claimed.get_future().get();
}

void HotKeyListener::release() {
    std::promise<void> released;
    thread_.post([&](Connection* connection) {
        grabs_.release(connection);
        released.set_value();
    });
    released.get_future().wait();
}

void HotKeyListener::connected(Connection& connection) {
    filter_ = KeyPressFilter();
    filter_.setRepeatsAreDetectable(selectKeyboardEvents(connection));
    grabs_.renew(connection, true);
}

void HotKeyListener::received(Connection& connection, const xcb_generic_event_t& event) {
    if (isKeyboardChange(connection, event)) {
        keyboardChanged_ = true;
    } else if (eventNumber(event) == XCB_KEY_PRESS || eventNumber(event) == XCB_KEY_RELEASE) {
        handleKey(event);
    }
}

void HotKeyListener::settled(Connection& connection) {
    if (std::exchange(keyboardChanged_, false)) {
        grabs_.renew(connection, false);
    }
}

void HotKeyListener::handleKey(const xcb_generic_event_t& event) {
    // Presses and releases are laid out alike.
    xcb_key_press_event_t key{};
    std::memcpy(&key, &event, sizeof key);
    if (eventNumber(event) == XCB_KEY_RELEASE) {
        filter_.released(key.detail, key.time);
        return;
    }
    // Above the modifiers, the state holds pointer buttons and the keyboard group.
    constexpr std::uint16_t modifierBits = 0xFF;
    const auto modifiers = static_cast<std::uint16_t>(key.state & modifierBits);
    if (filter_.pressed(key.detail, key.time) && grabs_.holds(key.detail, modifiers)) {
        pressed_();
    }
}

}  // namespace tavrel::x11
