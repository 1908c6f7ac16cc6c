#pragma once

#include <cstdint>
#include <memory>

#include "platform/MainQueue.h"

namespace tavrel {

/// A system-wide key chord as an application registers it. Numbers are those of the
/// Mac's event manager, which every implementation translates to its own.
struct HotKeyRegistration {
    /// The virtual key code: the key's place on a US keyboard.
    std::uint32_t keyCode;
    /// A sum of the `hotKeyModifier` masks.
    std::uint32_t modifiers;
    /// A four-character code and a number that identify the hot key to its owner.
    std::uint32_t signature;
    std::uint32_t id;
    std::uint32_t options;
};

namespace hotKeyModifier {
inline constexpr std::uint32_t command = 0x100;
inline constexpr std::uint32_t option = 0x800;
inline constexpr std::uint32_t control = 0x1000;
}  // namespace hotKeyModifier

/// Key chords that reach this application whichever window has the focus.
/// Main thread only; the thing made by each call is destroyed there too.
class HotKeys {
public:
    /// Releases what it stands for when destroyed.
    class Handle {
    public:
        virtual ~Handle() = default;
    };

    virtual ~HotKeys() = default;

    /// Runs `pressed` on the main thread once for each press of a registered hot key;
    /// a key held down is one press. Null when the system refuses.
    virtual std::unique_ptr<Handle> installEventHandler(Task pressed) = 0;

    /// Claims the chord. Null when the system refuses, for one because another program
    /// holds it.
    virtual std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) = 0;
};

}  // namespace tavrel
