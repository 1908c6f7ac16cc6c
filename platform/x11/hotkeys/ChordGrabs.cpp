#include "platform/x11/hotkeys/ChordGrabs.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

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

}  // namespace tavrel::x11
