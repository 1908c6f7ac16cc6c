#include "platform/x11/hotkeys/ChordGrabs.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

bool ChordGrabs::claim(Connection& connection, const HotKeyRegistration& hotKey) {
    if (claimed_.has_value()) {
        return false;
    }
    claimed_ = hotKey;
    if (!grab(connection)) {
        claimed_.reset();
    }
    return claimed_.has_value();
}

void ChordGrabs::release(Connection* connection) {
    claimed_.reset();
    if (connection != nullptr) {
        ungrab(*connection);
    }
    held_.clear();
}

void ChordGrabs::renew(Connection& connection, bool isNewConnection) {
    std::optional<KeyboardMapping> mapping = readKeyboardMapping(connection);
    if (!mapping.has_value() || (*mapping == mapping_ && !isNewConnection)) {
        return;
    }
    mapping_ = std::move(*mapping);
    if (isNewConnection) {
        held_.clear();
    }
    // Only when they differ: a press between ungrabbing and grabbing would be missed.
    if (claimed_.has_value() && held_ != grabsFor(*claimed_, mapping_)) {
        ungrab(connection);
        grab(connection);
    }
}

bool ChordGrabs::grab(Connection& connection) {
    std::vector<xcb_void_cookie_t> requests;
    held_ = grabsFor(*claimed_, mapping_);
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
    return !held_.empty();
}

void ChordGrabs::ungrab(Connection& connection) {
    for (const KeyGrab& each : std::exchange(held_, {})) {
        for (const xcb_window_t root : connection.roots()) {
            xcb_ungrab_key(connection.get(), each.keycode, root, each.modifiers);
        }
    }
    connection.roundTrip();
}

}  // namespace tavrel::x11
