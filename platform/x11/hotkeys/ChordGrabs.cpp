#include "platform/x11/hotkeys/ChordGrabs.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "platform/x11/hotkeys/Keyboard.h"

namespace tavrel::x11 {

std::optional<ChordGrabs::Number> ChordGrabs::claim(Connection& connection,
                                                    const HotKeyRegistration& hotKey) {
    Chord chord{.hotKey = hotKey, .held = {}};
    if (!grab(connection, chord)) {
        return std::nullopt;
    }
    chords_.emplace(++lastNumber_, std::move(chord));
    return lastNumber_;
}

void ChordGrabs::release(Connection* connection, Number number) {
    auto chord = chords_.extract(number);
    if (!chord.empty() && connection != nullptr) {
        ungrab(*connection, chord.mapped());
    }
}

void ChordGrabs::renew(Connection& connection, bool isNewConnection) {
    std::optional<KeyboardMapping> mapping = readKeyboardMapping(connection);
    if (!mapping.has_value() || (*mapping == mapping_ && !isNewConnection)) {
        return;
    }
    mapping_ = std::move(*mapping);
    for (auto& [number, chord] : chords_) {
        if (isNewConnection) {
            chord.held.clear();
        }
        if (chord.held == grabsFor(chord.hotKey, mapping_)) {
            continue;  // Letting go even for a moment could miss a press.
        }
        ungrab(connection, chord);
        grab(connection, chord);
    }
}

bool ChordGrabs::holds(Keycode key, std::uint16_t modifiers) const {
    return std::any_of(chords_.begin(), chords_.end(), [&](const auto& each) {
        return each.second.held.count({key, modifiers}) != 0;
    });
}

bool ChordGrabs::grab(Connection& connection, Chord& chord) {
    std::vector<xcb_void_cookie_t> requests;
    chord.held = grabsFor(chord.hotKey, mapping_);
    for (const KeyGrab& each : chord.held) {
        for (const xcb_window_t root : connection.roots()) {
            // A window of ours that has the focus must not get the key as well.
            constexpr std::uint8_t ownerEvents = 0;
            requests.push_back(xcb_grab_key_checked(connection.get(), ownerEvents, root,
                                                    each.modifiers, each.keycode,
                                                    XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
        }
    }
    // Each is asked after, also when one was refused already: xcb keeps the answers.
    const auto refused = std::count_if(requests.begin(), requests.end(), [&](auto request) {
        return !connection.succeeded(request);
    });
    if (refused != 0) {
        ungrab(connection, chord);
    }
    return !chord.held.empty();
}

void ChordGrabs::ungrab(Connection& connection, Chord& chord) {
    const std::set<KeyGrab> grabs = std::exchange(chord.held, {});
    for (const KeyGrab& each : grabs) {
        if (holds(each.keycode, each.modifiers)) {
            continue;  // Another claim of ours needs it.
        }
        for (const xcb_window_t root : connection.roots()) {
            xcb_ungrab_key(connection.get(), each.keycode, root, each.modifiers);
        }
    }
    connection.roundTrip();
}

}  // namespace tavrel::x11
