#pragma once

#include <chrono>

#include "platform/gnome/BusDisplayConfig.h"
#include "platform/gnome/DisplayConfig.h"

namespace tavrel::gnome {

/// How long a compositor may take to show what it is.
inline constexpr std::chrono::milliseconds probeTimeout{3000};

/// Whether it does what GNOME's does: other compositors are on the bus under its name, and tell
/// of monitors, but do not take layouts. So it is asked what it would say to the one it has.
/// One that is there and says nothing counts as GNOME's: what hangs is not another.
bool answersLikeGnome(DisplayConfig& config);

/// The same of the one on the session's bus.
bool answersLikeGnome(const GnomeOptions& options = {.timeout = probeTimeout});

}  // namespace tavrel::gnome
