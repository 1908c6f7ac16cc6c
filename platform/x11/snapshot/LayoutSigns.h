#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

// How to see for a few hundred bytes, in one round trip, that a layout is still the one that
// was read whole. It costs no probing: RandR 1.5's GetMonitors answers from the server's memory,
// where GetScreenInfo, which has the stamps too, makes the server look for monitors.
//
// A server tells the times of two changes. What moves them, from the RandR protocol and as seen
// at Xorg 21.1 with the dummy driver:
//
// - the time of the layout, in each GetOutputInfo: each successful SetCrtcConfig, so whatever a
//   client changes about a CRTC. Not a new size of the screen, not another primary output, and
//   nothing that a driver does by itself. A graphics card that only lends its outputs has a time
//   of its own.
// - the time of the configuration, in GetMonitors: an output that counts as connected, or no
//   longer, and a mode that comes to an output. Not a mode that leaves one, of which there is no
//   event either, and not an EDID.
//
// So the stamps alone could miss something, and these are asked as well: which CRTCs are on,
// where, with which outputs, and the primary one among them (GetMonitors); the screen's size
// (GetGeometry); of one display that is on, whether it is still connected and driven; and of one
// thing more, whatever remains. So what moves no stamp shows after one round of questions at the
// latest, and that a lone display has gone shows at once.

/// A question about a part of the layout, and its answer.
struct Sign {
    enum class Question { monitors, screenSize, output, edid, primary };

    Question question = Question::monitors;
    /// The output in question, if it is about one.
    Xid output = 0;
    /// The reply, without its number in the connection.
    std::vector<std::uint8_t> answer = {};

    friend bool operator==(const Sign&, const Sign&) = default;
};

/// What belongs to one layout.
struct LayoutSigns {
    /// A server may ask for it, to know what the questions are about.
    std::uint32_t configTimestamp = 0;
    std::vector<Sign> general;
    /// One for each display that is on.
    std::vector<Sign> shown;
    /// All else.
    std::vector<Sign> further;

    friend bool operator==(const LayoutSigns&, const LayoutSigns&) = default;
};

/// The signs of the layout in `snapshot`, as they are now. std::nullopt when the connection is
/// lost, a question has no answer, or the server has no list of monitors.
std::optional<LayoutSigns> readSigns(Connection& connection, const Snapshot& snapshot);

/// Asks for all that is general, one of those shown and one further sign, and returns whether
/// each is as in `signs`. Both are the next ones with the next `turn`. False when the connection
/// is lost.
bool areSame(Connection& connection, const LayoutSigns& signs, std::size_t turn);

}  // namespace tavrel::x11
