#include <gmock/gmock.h>

#include <cstdint>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "platform/layout/Identity.h"

namespace tavrel::layout {
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

const std::vector<std::uint8_t> monitorBytes{0x1E, 0x6D, 0x34, 0x12, 0x78, 0x56, 0x34, 0xF2};

TEST(EdidTest, HoldsVendorProductAndSerial) {
    EXPECT_EQ(parseEdid(edidWith(monitorBytes)),
              (EdidNumbers{.vendor = 0x1E6D, .product = 0x1234, .serial = 0xF2345678}));
}

TEST(EdidTest, FurtherBlocksMakeNoDifference) {
    std::vector<std::uint8_t> bytes = edidWith(monitorBytes);
    bytes.resize(256, 7);
    EXPECT_EQ(parseEdid(bytes).serial, 0xF2345678);
}

TEST(EdidTest, SaysNothingWhenThereIsNone) {
    EXPECT_EQ(parseEdid({}), EdidNumbers());
}

TEST(EdidTest, SaysNothingWhenItIsCutShort) {
    std::vector<std::uint8_t> bytes = edidWith(monitorBytes);
    bytes.pop_back();
    EXPECT_EQ(parseEdid(bytes), EdidNumbers());
}

TEST(EdidTest, SaysNothingWhenAnyByteIsDamaged) {
    const std::vector<std::uint8_t> intact = edidWith(monitorBytes);
    for (std::size_t i = 0; i < intact.size(); ++i) {
        std::vector<std::uint8_t> bytes = intact;
        bytes[i] ^= 0x10;
        EXPECT_EQ(parseEdid(bytes), EdidNumbers()) << "byte " << i;
    }
}

TEST(EdidTest, SaysNothingWhenTheHeaderIsAnother) {
    std::vector<std::uint8_t> bytes = edidWith(monitorBytes);
    std::swap(bytes[0], bytes[1]);
    EXPECT_EQ(parseEdid(bytes), EdidNumbers());
}

/// A monitor with these four descriptions, each its head of five bytes and its text; a name's
/// head ends in 0xFC.
std::vector<std::uint8_t> edidWithTexts(
    const std::vector<std::pair<std::uint8_t, std::string>>& texts) {
    // Three letters of five bits: A, C and M.
    std::vector<std::uint8_t> identification{0x04, 0x6D, 0x4F, 0x1A, 1, 0, 0, 0};
    identification.resize(54 - 8);
    for (const auto& [kind, text] : texts) {
        identification.insert(identification.end(), {0, 0, 0, kind, 0});
        identification.insert(identification.end(), text.begin(), text.end());
        identification.resize((identification.size() + 8 - 54 + 17) / 18 * 18 + 54 - 8, ' ');
    }
    return edidWith(identification);
}

constexpr std::uint8_t aName = 0xFC;
constexpr std::uint8_t aSerialNumber = 0xFF;

TEST(MonitorNameTest, IsTheMakersLettersAndTheModelsName) {
    EXPECT_EQ(monitorName(edidWithTexts({{aName, "Wide 27U\n"}})), "ACM Wide 27U");
    EXPECT_EQ(monitorName(edidWithTexts({{aSerialNumber, "0815\n"}, {aName, "Wide 27U\n"}})),
              "ACM Wide 27U");
}

TEST(MonitorNameTest, MayFillItsPlaceAndEndInSpaces) {
    EXPECT_EQ(monitorName(edidWithTexts({{aName, "Thirteen char"}, {aSerialNumber, "no"}})),
              "ACM Thirteen char");
    EXPECT_EQ(monitorName(edidWithTexts({{aName, "Wide   "}})), "ACM Wide");
    auto edid = edidWithTexts(
        {{aSerialNumber, ""}, {aSerialNumber, ""}, {aSerialNumber, ""}, {aName, "Thirteen char"}});
    edid[126] += 'x';
    edid[127] -= 'x';
    EXPECT_EQ(monitorName(edid), "ACM Thirteen char") << "the last place there is";
}

TEST(MonitorNameTest, LeavesOutWhatCannotBeShown) {
    EXPECT_EQ(monitorName(edidWithTexts({{aName,
                                          "Wi\x01\xFF"
                                          "de\n"}})),
              "ACM Wide");
    EXPECT_EQ(monitorName(edidWithTexts({{aName, "~Wide~\x7F\n"}})), "ACM ~Wide~");
}

TEST(MonitorNameTest, IsTheModelsNumberWhereItHasNoName) {
    EXPECT_EQ(monitorName(edidWithTexts({})), "ACM 1A4F");
    EXPECT_EQ(monitorName(edidWithTexts({{aName, "\n"}})), "ACM 1A4F");
}

TEST(MonitorNameTest, LeavesOutAMakerThatIsNoThreeLetters) {
    EXPECT_EQ(monitorName(edidWith({0, 0, 0x4F, 0x1A})), "1A4F");
    EXPECT_EQ(monitorName(edidWith({0x7F, 0xFF, 0x4F, 0x1A})), "1A4F");
}

TEST(MonitorNameTest, TakesEachLetterOfTheAlphabetForAMakersAndNoOther) {
    EXPECT_EQ(monitorName(edidWith({0x6B, 0x5A, 0x4F, 0x1A})), "ZZZ 1A4F");
    EXPECT_EQ(monitorName(edidWith({0x6C, 0x21, 0x4F, 0x1A})), "1A4F") << "one beyond Z";
}

TEST(MonitorNameTest, IsReadThoughTheReservedByteBeforeItIsNotZero) {
    std::vector<std::uint8_t> edid = edidWithTexts({{aName, "Wide 27U\n"}});
    edid[54 + 4] += 1;
    edid[127] -= 1;

    EXPECT_EQ(monitorName(edid), "ACM Wide 27U");
}

TEST(MonitorNameTest, IsEmptyWithoutAnEdid) {
    EXPECT_EQ(monitorName({}), "");
    EXPECT_EQ(monitorName(edidWith({})), "") << "one that says nothing";
}

}  // namespace
}  // namespace tavrel::layout
