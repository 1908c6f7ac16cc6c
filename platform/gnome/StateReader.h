#pragma once

#include <systemd/sd-bus.h>

#include <optional>

#include "platform/gnome/MonitorState.h"

namespace tavrel::gnome {

/// What the answer to GetCurrentState says. std::nullopt when it is of another kind, names a
/// mode or a place that none can have, or a monitor that it doesn't list.
std::optional<MonitorState> readState(sd_bus_message* answer);

}  // namespace tavrel::gnome
