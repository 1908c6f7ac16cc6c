#pragma once

#include <cstdint>
#include <optional>
#include <set>

#include "platform/HotKeys.h"
#include "platform/x11/connection/Connection.h"
#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// The one chord claimed at a server. Its keys are grabbed on every root window, so that no
/// other client, and no window of ours, gets them. To be used by one thread.
class ChordGrabs {
public:
    /// Claims a chord. Returns false, with nothing changed, while one is claimed already, when
    /// the keyboard cannot type the chord, and when the server refuses any part of it, for one
    /// because another client holds that.
    bool claim(Connection& connection, const HotKeyRegistration& hotKey);
    /// Gives the chord up and blocks until others can have it. Without a connection, the server
    /// has taken it back already.
    void release(Connection* connection);

    /// Grabs the claimed chord anew. To be called with each new connection, and when the
    /// keyboard may have changed. A chord that the server refuses now stays claimed, and is
    /// tried again at the next change.
    void renew(Connection& connection, bool isNewConnection);

    /// Whether a key with exactly these modifier bits is the chord.
    bool holds(Keycode key, std::uint16_t modifiers) const {
        return held_.count({key, modifiers}) != 0;
    }

private:
    bool grab(Connection& connection);
    void ungrab(Connection& connection);

    KeyboardMapping mapping_;
    std::optional<HotKeyRegistration> claimed_;
    std::set<KeyGrab> held_;
};

}  // namespace tavrel::x11
