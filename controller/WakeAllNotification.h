#pragma once

#include <string_view>

namespace tavrel {

/// The in-process notification that asks for every display to be switched on.
inline constexpr std::string_view wakeAllDisplays = "local.display-control.wake-all";

}  // namespace tavrel
