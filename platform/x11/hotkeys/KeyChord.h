#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "platform/HotKeys.h"

namespace tavrel::x11 {

using Keycode = std::uint8_t;
using Keysym = std::uint32_t;

/// What is on the keys of a server's keyboard.
struct KeyboardMapping {
    Keycode firstKeycode = 8;
    /// For each key from the first one on, its symbols in all groups and levels.
    std::vector<std::vector<Keysym>> keysyms = {};
    /// The keys that set each of the eight modifier bits, from Shift to Mod5.
    std::array<std::vector<Keycode>, 8> modifierKeys = {};

    friend bool operator==(const KeyboardMapping&, const KeyboardMapping&) = default;
};

/// A key together with exactly these modifier bits.
struct KeyGrab {
    Keycode keycode = 0;
    std::uint16_t modifiers = 0;

    friend bool operator==(const KeyGrab&, const KeyGrab&) = default;
    friend bool operator<(const KeyGrab& a, const KeyGrab& b) {
        return std::pair(a.keycode, a.modifiers) < std::pair(b.keycode, b.modifiers);
    }
};

/// Whether some keyboard has this chord: whether we know its key code and its modifiers.
bool isKnownChord(const HotKeyRegistration& hotKey);

/// All that has to be grabbed for a hot key: each key that has its letter, with the modifier
/// bits of Control, Alt (option) and Super (command), in every combination with Caps Lock and
/// Num Lock. Where no key has the letter, the key in its place on an ordinary PC keyboard
/// serves. Empty when a modifier has no key, and for a chord that we do not know.
std::set<KeyGrab> grabsFor(const HotKeyRegistration& hotKey, const KeyboardMapping& mapping);

}  // namespace tavrel::x11
