#pragma once

#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/hotkeys/KeyChord.h"

namespace tavrel::x11 {

/// What is on the keys now. Nothing when the connection is lost.
std::optional<KeyboardMapping> readKeyboardMapping(Connection& connection);

/// Makes the server tell this connection of repeats in a way that cannot be mistaken, and
/// of every change to what is on the keys. Returns whether it will do the former; it tells
/// of such changes, one way or the other, in any case.
bool selectKeyboardEvents(Connection& connection);

/// Whether the event says that something about the keys may have changed.
bool isKeyboardChange(Connection& connection, const xcb_generic_event_t& event);

}  // namespace tavrel::x11
