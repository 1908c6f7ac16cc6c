#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What is remembered of a display that only an X server knows. The server's numbers are
/// hints: after a restart they mean nothing.
struct CrtcNotes {
    Xid modeHint = 0;
    Xid crtcHint = 0;
    Transform transform = {};
    /// The X screen with this display in it.
    ScreenSize screen = {};

    friend bool operator==(const CrtcNotes&, const CrtcNotes&) = default;
};

/// What is to be remembered of a display that `crtc` drives.
CrtcNotes notesOn(const Snapshot& snapshot, const Crtc& crtc);

/// The stored form, a JSON object. Persistent: do not change the meaning of a member.
std::string encodeNotes(const CrtcNotes& notes);

/// Notes without any hint where there are none at all: the display was switched off in a session
/// with another window server. std::nullopt when a member is missing or malformed.
std::optional<CrtcNotes> decodeNotes(std::string_view notes);

}  // namespace tavrel::x11
