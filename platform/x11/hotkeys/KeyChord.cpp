#include "platform/x11/hotkeys/KeyChord.h"

#include <algorithm>
#include <initializer_list>
#include <optional>

namespace tavrel::x11 {

namespace {

// Numbers of the X protocol.
constexpr Keysym numLock = 0xff7f;
constexpr Keysym metaLeft = 0xffe7;
constexpr Keysym metaRight = 0xffe8;
constexpr Keysym altLeft = 0xffe9;
constexpr Keysym altRight = 0xffea;
constexpr Keysym superLeft = 0xffeb;
constexpr Keysym superRight = 0xffec;
constexpr std::uint16_t capsLockBit = 1U << 1;
constexpr std::uint16_t controlBit = 1U << 2;

/// The one key we know: its virtual key code, what a US keyboard has on it (a letter's keysym
/// is its character), and the keycode of its place on a PC keyboard, which X servers count
/// from the kernel's number by adding 8.
constexpr std::uint32_t virtualKeyW = 13;
constexpr std::initializer_list<Keysym> letterW{'w', 'W'};
constexpr Keycode placeOfW = 25;

constexpr std::uint32_t knownModifiers =
    hotKeyModifier::control | hotKeyModifier::option | hotKeyModifier::command;

bool hasKey(const KeyboardMapping& mapping, Keycode key) {
    return key >= mapping.firstKeycode &&
           static_cast<std::size_t>(key) - mapping.firstKeycode < mapping.keysyms.size();
}

bool carriesAny(const KeyboardMapping& mapping, Keycode key, std::initializer_list<Keysym> wanted) {
    if (!hasKey(mapping, key)) {
        return false;
    }
    const std::vector<Keysym>& carried =
        mapping.keysyms[static_cast<std::size_t>(key) - mapping.firstKeycode];
    return std::find_first_of(carried.begin(), carried.end(), wanted.begin(), wanted.end()) !=
           carried.end();
}

/// The first modifier bit that a key with one of these sets; 0 when none does.
std::uint16_t modifierOf(const KeyboardMapping& mapping, std::initializer_list<Keysym> wanted) {
    // The first three, Shift, Lock and Control, are never another modifier's.
    for (std::size_t bit = 3; bit < mapping.modifierKeys.size(); ++bit) {
        const std::vector<Keycode>& keys = mapping.modifierKeys[bit];
        if (std::any_of(keys.begin(), keys.end(),
                        [&](Keycode key) { return carriesAny(mapping, key, wanted); })) {
            return static_cast<std::uint16_t>(1U << bit);
        }
    }
    return 0;
}

std::optional<std::uint16_t> modifiersOf(const HotKeyRegistration& hotKey,
                                         const KeyboardMapping& mapping) {
    using namespace hotKeyModifier;
    std::uint16_t modifiers = (hotKey.modifiers & control) != 0 ? controlBit : 0;
    if ((hotKey.modifiers & option) != 0) {
        std::uint16_t alt = modifierOf(mapping, {altLeft, altRight});
        if (alt == 0) {
            alt = modifierOf(mapping, {metaLeft, metaRight});
        }
        if (alt == 0) {
            return std::nullopt;
        }
        modifiers |= alt;
    }
    if ((hotKey.modifiers & command) != 0) {
        const std::uint16_t super = modifierOf(mapping, {superLeft, superRight});
        if (super == 0) {
            return std::nullopt;
        }
        modifiers |= super;
    }
    return modifiers;
}

/// The keys that carry W; where none does, the one in its place.
std::vector<Keycode> keysFor(const KeyboardMapping& mapping) {
    std::vector<Keycode> keys;
    for (std::size_t i = 0; i < mapping.keysyms.size(); ++i) {
        const auto key = static_cast<Keycode>(mapping.firstKeycode + i);
        if (carriesAny(mapping, key, letterW)) {
            keys.push_back(key);
        }
    }
    if (keys.empty() && hasKey(mapping, placeOfW)) {
        keys.push_back(placeOfW);
    }
    return keys;
}

}  // namespace

bool isKnownChord(const HotKeyRegistration& hotKey) {
    return hotKey.keyCode == virtualKeyW && (hotKey.modifiers & ~knownModifiers) == 0;
}

std::set<KeyGrab> grabsFor(const HotKeyRegistration& hotKey, const KeyboardMapping& mapping) {
    const std::optional<std::uint16_t> modifiers = modifiersOf(hotKey, mapping);
    if (!isKnownChord(hotKey) || !modifiers.has_value()) {
        return {};
    }
    const std::uint16_t numLockBit = modifierOf(mapping, {numLock});
    std::set<KeyGrab> grabs;
    for (const Keycode key : keysFor(mapping)) {
        for (const int locks : {0, int{capsLockBit}, int{numLockBit}, capsLockBit | numLockBit}) {
            grabs.insert({key, static_cast<std::uint16_t>(*modifiers | locks)});
        }
    }
    return grabs;
}

}  // namespace tavrel::x11
