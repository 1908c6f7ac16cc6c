#include "platform/x11/hotkeys/HotKeyListener.h"

#include <algorithm>
#include <cstring>
#include <future>
#include <utility>
#include <vector>

namespace tavrel::x11 {

namespace {
constexpr std::chrono::milliseconds retryInterval{2000};
}  // namespace

bool ChordGrabs::claim(const HotKeyRegistration& hotKey) {
    if (claimed_.has_value() || !isKnownChord(hotKey)) {
        return false;
    }
    claimed_ = hotKey;
    return true;
}

void ChordGrabs::release(Connection* connection) {
    claimed_.reset();
    if (connection != nullptr) {
        ungrab(*connection);
    }
    held_.clear();
}

void ChordGrabs::renew(Connection& connection, bool isNewConnection) {
    if (isNewConnection) {
        held_.clear();
    }
    if (!claimed_.has_value()) {
        return;
    }
    const std::optional<KeyboardMapping> mapping = readKeyboardMapping(connection);
    if (!mapping.has_value()) {
        return;
    }
    std::set<KeyGrab> wanted = grabsFor(*claimed_, *mapping);
    // Only when they differ: a press between ungrabbing and grabbing would be missed.
    if (held_ != wanted) {
        ungrab(connection);
        grab(connection, std::move(wanted));
    }
}

void ChordGrabs::grab(Connection& connection, std::set<KeyGrab> wanted) {
    std::vector<xcb_void_cookie_t> requests;
    held_ = std::move(wanted);
    for (const KeyGrab& each : held_) {
        for (const xcb_window_t root : connection.roots()) {
            // A window of ours that has the focus must not get the key as well.
            constexpr std::uint8_t ownerEvents = 0;
            requests.push_back(xcb_grab_key_checked(connection.get(), ownerEvents, root,
                                                    each.modifiers, each.keycode,
                                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
    }
    // Asks about each, also after a refusal: xcb keeps an answer until somebody asks for it.
    const auto refused = std::count_if(requests.begin(), requests.end(), [&](auto request) {
        return !connection.succeeded(request);
    });
    if (refused != 0) {
        ungrab(connection);
    }
}

void ChordGrabs::ungrab(Connection& connection) {
    if (held_.empty()) {
        return;
    }
    for (const KeyGrab& each : std::exchange(held_, {})) {
        for (const xcb_window_t root : connection.roots()) {
            xcb_ungrab_key(connection.get(), each.keycode, root, each.modifiers);
        }
    }
    connection.roundTrip();
}

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
