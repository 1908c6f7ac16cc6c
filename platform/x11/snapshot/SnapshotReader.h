#pragma once

#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// When the server is made to look for monitors anew, instead of saying what it found when it
/// looked last. It reads what the monitors say of themselves over slow wires, and serves nobody
/// meanwhile.
enum class Probing {
    never,
    /// When what it says contradicts itself: an output that drives a CRTC and counts as
    /// disconnected may be one that has been connected since it looked last. Once for each
    /// layout it shows.
    onContradiction,
    /// Whatever it says; but one look serves all who ask within a second.
    always,
};

/// All that RandR says of the connection's screen. std::nullopt when the connection is
/// lost, or the server answers with errors time after time.
///
/// It is quicker by a round trip while there is what there was in `expected`, however that is set
/// by now. Null when nothing is known.
std::optional<Snapshot> readSnapshot(Connection& connection, Probing probing,
                                     const Snapshot* expected = nullptr);

/// Makes the server look for monitors anew, and returns what there is, to be read as `expected`;
/// how it is set is left out. std::nullopt when the connection is lost, or the answer an error.
std::optional<Snapshot> lookForMonitors(Connection& connection);

}  // namespace tavrel::x11
