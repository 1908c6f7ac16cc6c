#pragma once

#include <optional>
#include <string>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::plasma {

/// A connection to a Wayland server's socket, and whether that was possible.
struct WaylandSocket {
    FileDescriptor descriptor;
    /// Whether a server is there that takes no more connections now: it is silent, not gone.
    bool isCrowded = false;
};

/// Connects to the socket of that name, in the user's runtime folder unless it is a path; to
/// that of WAYLAND_DISPLAY when this is std::nullopt, and to none where that says nothing. The
/// descriptor is not inherited by started programs. Never blocks.
///
/// libwayland's own way blocks while a server that hangs has too many waiting, and takes what
/// WAYLAND_SOCKET names, which is the toolkit's.
WaylandSocket connectSocket(const std::optional<std::string>& name);

}  // namespace tavrel::plasma
