#include "platform/layout/Edid.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace tavrel::x11 {

EdidNumbers parseEdid(const std::vector<std::uint8_t>& bytes) {
    constexpr std::size_t blockSize = 128;
    constexpr std::array<std::uint8_t, 8> header{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    if (bytes.size() < blockSize || !std::equal(header.begin(), header.end(), bytes.begin())) {
        return {};
    }
    const unsigned sum = std::accumulate(bytes.begin(), bytes.begin() + blockSize, 0U);
    if (sum % 256 != 0) {
        return {};
    }
    const auto byte = [&bytes](std::size_t at) { return std::uint32_t{bytes[at]}; };
    return {.vendor = byte(8) << 8 | byte(9),
            .product = byte(11) << 8 | byte(10),
            .serial = byte(15) << 24 | byte(14) << 16 | byte(13) << 8 | byte(12)};
}

}  // namespace tavrel::x11
