#pragma once

#include <cstdint>
#include <vector>

namespace tavrel::x11 {

/// The numbers by which a monitor tells itself from others; each 0 where it says nothing.
struct EdidNumbers {
    std::uint32_t vendor = 0;
    std::uint32_t product = 0;
    std::uint32_t serial = 0;

    friend bool operator==(const EdidNumbers&, const EdidNumbers&) = default;
};

/// Reads them from the bytes of an EDID. All 0 when these are not one, or are damaged: a
/// number read wrongly would make the monitor a stranger.
EdidNumbers parseEdid(const std::vector<std::uint8_t>& bytes);

}  // namespace tavrel::x11
