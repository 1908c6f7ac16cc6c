#include "platform/layout/Edid.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tavrel::x11 {
namespace {

std::vector<std::uint8_t> edidWith(const std::vector<std::uint8_t>& identification) {
    std::vector<std::uint8_t> bytes{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    bytes.reserve(128);
    bytes.insert(bytes.end(), identification.begin(), identification.end());
    bytes.resize(127);
    const unsigned sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
    bytes.push_back(static_cast<std::uint8_t>(256 - sum % 256));
    return bytes;
}

const std::vector<std::uint8_t> someone{0x1E, 0x6D, 0x34, 0x12, 0x78, 0x56, 0x34, 0xF2};

TEST(EdidTest, HoldsVendorProductAndSerial) {
    EXPECT_EQ(parseEdid(edidWith(someone)),
              (EdidNumbers{.vendor = 0x1E6D, .product = 0x1234, .serial = 0xF2345678}));
}

TEST(EdidTest, FurtherBlocksMakeNoDifference) {
    std::vector<std::uint8_t> bytes = edidWith(someone);
    bytes.resize(256, 7);
    EXPECT_EQ(parseEdid(bytes).serial, 0xF2345678);
}

TEST(EdidTest, SaysNothingWhenThereIsNone) {
    EXPECT_EQ(parseEdid({}), EdidNumbers());
}

TEST(EdidTest, SaysNothingWhenItIsCutShort) {
    std::vector<std::uint8_t> bytes = edidWith(someone);
    bytes.pop_back();
    EXPECT_EQ(parseEdid(bytes), EdidNumbers());
}

TEST(EdidTest, SaysNothingWhenAnyByteIsDamaged) {
    const std::vector<std::uint8_t> intact = edidWith(someone);
    for (std::size_t i = 0; i < intact.size(); ++i) {
        std::vector<std::uint8_t> bytes = intact;
        bytes[i] ^= 0x10;
        EXPECT_EQ(parseEdid(bytes), EdidNumbers()) << "byte " << i;
    }
}

TEST(EdidTest, SaysNothingWhenTheHeaderIsAnother) {
    std::vector<std::uint8_t> bytes = edidWith(someone);
    std::swap(bytes[0], bytes[1]);
    EXPECT_EQ(parseEdid(bytes), EdidNumbers());
}

}  // namespace
}  // namespace tavrel::x11
