#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/MainQueue.h"

namespace tavrel {

/// A system-wide key chord as an application registers it. The numbers are those of the
/// Mac's event manager; other systems translate them.
struct HotKeyRegistration {
    /// The virtual key code: the position of the key on a US keyboard.
    std::uint32_t keyCode;
    /// A sum of the `hotKeyModifier` masks.
    std::uint32_t modifiers;
    /// A four-character code and a number that identify the hot key to its owner.
    std::uint32_t signature;
    std::uint32_t id;
    std::uint32_t options;

    friend bool operator==(const HotKeyRegistration&, const HotKeyRegistration&) = default;
};

namespace hotKeyModifier {
inline constexpr std::uint32_t command = 0x100;
inline constexpr std::uint32_t option = 0x800;
inline constexpr std::uint32_t control = 0x1000;
}  // namespace hotKeyModifier

/// Key chords that reach this application whichever window has the focus.
/// Main thread only, and so are the handles.
class HotKeys {
public:
    /// An event handler, a claimed chord or an observer, released when the handle is destroyed.
    class Handle {
    public:
        virtual ~Handle() = default;
    };

    virtual ~HotKeys() = default;

    /// Runs `pressed` on the main thread once for each press of a registered hot key; holding
    /// it down is one press. Returns null when the system refuses.
    virtual std::unique_ptr<Handle> installEventHandler(Task pressed) = 0;

    /// Claims the chord. Returns null when the system refuses for good. Where it may be had
    /// later, for example when another program lets go of it, the handle stands for the claim
    /// and the system tries on; `isHeld` says how that went.
    virtual std::unique_ptr<Handle> registerHotKey(const HotKeyRegistration& hotKey) = 0;

    /// Whether the registered chord reaches this application now.
    virtual bool isHeld() const = 0;

    /// Runs `changed` on the main thread each time `isHeld` or `boundTo` may have changed by
    /// itself. Returns null where they never do, because what was accepted stays held.
    virtual std::unique_ptr<Handle> observeHeld(Task changed) = 0;

    /// The keys that the user has bound in place of the registered chord, in the system's words;
    /// empty where it is that chord.
    virtual std::string boundTo() const { return {}; }

    /// Whether the desktop, asking its user, decides which chords an application gets. A chord that
    /// is not held has then not been given; where this is false, another program has it or the
    /// keyboard lacks one of its keys.
    virtual bool desktopDecides() const { return false; }
};

}  // namespace tavrel
