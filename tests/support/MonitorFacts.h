#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavrel::support {

/// What a monitor says of itself.
struct MonitorFacts {
    /// Three capital letters.
    std::string maker = "ACM";
    std::uint16_t product = 1;
    std::uint32_t serial = 1;
    /// At most thirteen letters; left out when empty.
    std::string name = {};
};

/// The EDID in which it says so.
std::vector<std::uint8_t> edidOf(const MonitorFacts& facts);

/// From now on the X server at `displayName` shows this monitor's EDID at the output, or none.
/// The dummy driver's monitors have none, so this is what plugging one in comes to. Blocks until
/// it is so; throws std::runtime_error when there is no such output.
void showEdid(const std::string& displayName, const std::string& output,
              const std::optional<MonitorFacts>& facts);

}  // namespace tavrel::support
