#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// What is on the keys now; std::nullopt when the connection is lost.
std::optional<KeyboardMapping> readKeyboardMapping(Connection& connection);

/// Asks the server for detectable repeats and for events about changes to what is on the keys.
/// Returns whether it will send no releases between repeats. It sends events about such
/// changes in any case.
bool selectKeyboardEvents(Connection& connection);

/// Whether the event says that something about the keys may have changed.
bool isKeyboardChange(Connection& connection, const xcb_generic_event_t& event);

/// Tells real presses of a key from the repeats of one that is held down.
///
/// A server with detectable repeats sends no releases between them. Any other sends a release
/// and a press with the same time for each repeat.
class KeyPressFilter {
public:
    /// Notes a press and returns whether it is a real one.
    bool pressed(Keycode key, std::uint32_t time);
    void released(Keycode key, std::uint32_t time);

    /// Whether the server sends no releases between repeats. Taken as false before this call.
    void setRepeatsAreDetectable(bool detectable) { repeatsAreDetectable_ = detectable; }

private:
    bool repeatsAreDetectable_ = false;
    std::set<Keycode> down_;
    std::map<Keycode, std::uint32_t> releases_;
};

}  // namespace tavrel::x11
