#pragma once

#include <chrono>
#include <optional>

#include "platform/x11/connection/Connection.h"

namespace tavrel::x11 {

/// How long an X server may take to show what it is.
inline constexpr std::chrono::milliseconds probeTimeout{3000};

/// Whether the X server draws into a Wayland compositor's windows. It says so by an extension
/// since version 23.1; before, only its outputs were called after it. std::nullopt without a
/// server. Blocks at most for the options' timeout, for each answer.
std::optional<bool> isXwayland(const X11ServerOptions& options = {.timeout = probeTimeout});

}  // namespace tavrel::x11
