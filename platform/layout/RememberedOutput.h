#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// How a display was set up when it was switched off; all that it takes to bring it back
/// as it was. Numbers of the server's are hints: after a restart they mean nothing.
struct RememberedOutput {
    DisplayID display = 0;
    ModeTimings mode = {};
    Xid modeHint = 0;
    Xid crtcHint = 0;
    Area area = {};
    Rotation rotation = upright;
    Transform transform = {};
    /// The displays that showed (part of) the same picture.
    std::vector<DisplayID> mirrors = {};
    /// Whether it was primary, and if so, only in place of one that was off.
    bool primary = false;
    bool primaryOnLoan = false;
    /// The X screen with this display in it.
    ScreenSize screen = {};

    friend bool operator==(const RememberedOutput&, const RememberedOutput&) = default;
};

/// The stored form, a JSON array. Persistent: do not change the meaning of a member.
std::string encodeRemembered(const std::vector<RememberedOutput>& remembered);

/// Nothing unless the bytes are, whole, what `encodeRemembered` writes.
std::optional<std::vector<RememberedOutput>> decodeRemembered(std::string_view bytes);

}  // namespace tavrel::x11
