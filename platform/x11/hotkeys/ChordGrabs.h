#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "platform/HotKeys.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// The chords claimed at a server, grabbed on every root window so that no other client,
/// and no window of ours, sees them. To be used by one thread.
class ChordGrabs {
public:
    using Number = std::uint64_t;

    /// Claims a chord. Nothing, and nothing held, when the server refuses any part of it,
    /// for one because another client holds that, or when the keyboard cannot type it.
    std::optional<Number> claim(Connection& connection, const HotKeyRegistration& hotKey);
    /// Gives it up; when this returns, others can have it. Without a connection the server
    /// has taken it back already.
    void release(Connection* connection, Number number);

    /// To be called with each new connection, and when the keyboard may have changed. Grabs
    /// anew what is claimed. What the server refuses then stays claimed, and is tried again
    /// with the next change.
    void renew(Connection& connection, bool isNewConnection);

    /// Whether a key with these modifier bits is one of the chords.
    bool holds(Keycode key, std::uint16_t modifiers) const;

private:
    struct Chord {
        HotKeyRegistration hotKey;
        std::set<KeyGrab> held;
    };

    bool grab(Connection& connection, Chord& chord);
    void ungrab(Connection& connection, Chord& chord);

    KeyboardMapping mapping_;
    std::map<Number, Chord> chords_;
    Number lastNumber_ = 0;
};

}  // namespace tavrel::x11
