#pragma once

#include <optional>

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

}  // namespace tavrel::x11
