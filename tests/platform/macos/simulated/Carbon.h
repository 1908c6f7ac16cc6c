#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrel::simulatedMac {

/// Somebody presses this chord: every handler for hot keys runs if it is registered.
/// Returns whether it is. Main thread only.
bool pressHotKey(std::uint32_t keyCode, std::uint32_t modifiers);

std::size_t installedEventHandlers();
std::size_t registeredHotKeys();

/// The status of the last handler that ran.
std::int32_t lastHandlerStatus();

}  // namespace tavrel::simulatedMac
