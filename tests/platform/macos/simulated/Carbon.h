#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tavrel::simulatedMac {

/// Somebody presses this chord: if it is registered, every handler for hot keys runs. Returns
/// the handlers' statuses; std::nullopt when the chord is not registered. Main thread only.
std::optional<std::vector<std::int32_t>> pressHotKey(std::uint32_t keyCode,
                                                     std::uint32_t modifiers);

std::size_t installedEventHandlers();
std::size_t registeredHotKeys();

}  // namespace tavrel::simulatedMac
