#pragma once

#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// All that RandR says of the connection's screen. std::nullopt when the connection is
/// lost, or the server answers with errors time after time.
///
/// The server is not made to look for monitors anew, which can take long, unless what it
/// says contradicts itself: an output that drives a CRTC and counts as disconnected may be
/// one that has been connected since it looked last. It is then made to look once for each
/// layout it shows.
std::optional<Snapshot> readSnapshot(Connection& connection);

}  // namespace tavrel::x11
