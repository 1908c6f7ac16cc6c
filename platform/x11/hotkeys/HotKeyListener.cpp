#include "platform/x11/hotkeys/HotKeyListener.h"

#include <cstring>
#include <future>
#include <utility>

namespace tavrel::x11 {

namespace {
constexpr std::chrono::milliseconds retryInterval{2000};
}  // namespace

HotKeyListener::HotKeyListener(Handlers handlers, const X11ServerOptions& options)
    : handlers_(std::move(handlers)), thread_(options, *this) {}

bool HotKeyListener::claim(const HotKeyRegistration& hotKey) {
    std::promise<bool> claimed;
    thread_.post([&](Connection* connection) {
        const bool isClaimed = grabs_.claim(hotKey);
        if (isClaimed && connection != nullptr) {
            grabs_.renew(*connection, false);
        }
        publishHeld();
        claimed.set_value(isClaimed);
    });
    return claimed.get_future().get();
}

void HotKeyListener::release() {
    std::promise<void> released;
    thread_.post([&](Connection* connection) {
        grabs_.release(connection);
        publishHeld();
        released.set_value();
    });
    released.get_future().wait();
}

void HotKeyListener::connected(Connection& connection) {
    filter_ = KeyPressFilter();
    filter_.setRepeatsAreDetectable(selectKeyboardEvents(connection));
    grabs_.renew(connection, true);
    publishHeld();
}

void HotKeyListener::received(Connection& connection, const xcb_generic_event_t& event) {
    if (isKeyboardChange(connection, event)) {
        keyboardChanged_ = true;
    } else if (eventNumber(event) == XCB_KEY_PRESS || eventNumber(event) == XCB_KEY_RELEASE) {
        handleKey(event);
    }
}

void HotKeyListener::settled(Connection& connection) {
    if (std::exchange(keyboardChanged_, false) || grabs_.isMissing()) {
        grabs_.renew(connection, false);
        publishHeld();
    }
}

std::optional<std::chrono::milliseconds> HotKeyListener::settlesAgainAfter() const {
    return grabs_.isMissing() ? std::optional(retryInterval) : std::nullopt;
}

void HotKeyListener::publishHeld() {
    if (isHeld_.exchange(grabs_.isHeld()) != grabs_.isHeld()) {
        handlers_.heldChanged();
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
        handlers_.pressed();
    }
}

}  // namespace tavrel::x11
