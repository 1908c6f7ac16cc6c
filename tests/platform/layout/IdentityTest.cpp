#include "platform/layout/Identity.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cstdlib>
#include <numeric>
#include <string>
#include <string_view>
#include <utility>

#include "tests/support/TemporaryFolder.h"

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

constexpr EdidNumbers someone{.vendor = 1, .product = 2, .serial = 3};
constexpr EdidNumbers other{.vendor = 1, .product = 2, .serial = 4};

DisplayID numberOf(const std::string& connector, const std::vector<Identity>& outputs,
                   const IdentityHash& hash = stableHash) {
    const auto found = std::find_if(outputs.begin(), outputs.end(), [&](const Identity& each) {
        return each.connector == connector;
    });
    return displayIdentifiers(outputs, hash).at(static_cast<std::size_t>(found - outputs.begin()));
}

TEST(StableHashTest, GivesTheNumbersItAlwaysGave) {
    // Users' stores hold such numbers. These are FNV-1a's published ones.
    EXPECT_EQ(stableHash(""), 0x811c9dc5U);
    EXPECT_EQ(stableHash("a"), 0xe40c292cU);
    EXPECT_EQ(stableHash("foobar"), 0xbf9cf968U);
}

TEST(DisplayIdentifiersTest, AMonitorKeepsItsNumber) {
    EXPECT_EQ(numberOf("DP-1", {{"DP-1", someone}}), stableHash("DP-1/1/2/3"));
    EXPECT_EQ(numberOf("DP-1", {{"DP-9", {}}, {"DP-1", someone}}), stableHash("DP-1/1/2/3"));
}

TEST(DisplayIdentifiersTest, ConnectorAndMonitorBothCount) {
    const std::vector<Identity> twins{{"DP-1", someone}, {"DP-2", someone}};
    const std::vector<Identity> swapped{{"DP-1", other}, {"DP-2", someone}};

    EXPECT_NE(numberOf("DP-1", twins), numberOf("DP-2", twins)) << "twins differ by connector";
    EXPECT_NE(numberOf("DP-1", twins), numberOf("DP-1", swapped));
    EXPECT_EQ(numberOf("DP-2", twins), numberOf("DP-2", swapped));
}

TEST(DisplayIdentifiersTest, CollisionsAreResolvedTheSameWayInWhateverOrderTheyAreListed) {
    const auto alike = [](std::string_view) { return 7U; };
    std::vector<Identity> outputs{{"A", other}, {"B", {}}, {"C", {}}, {"D", someone}};
    const auto byConnector = [](const Identity& a, const Identity& b) {
        return a.connector < b.connector;
    };

    do {
        EXPECT_EQ(numberOf("A", outputs, alike), 7U);
        EXPECT_EQ(numberOf("B", outputs, alike), 8U);
        EXPECT_EQ(numberOf("C", outputs, alike), 9U);
        EXPECT_EQ(numberOf("D", outputs, alike), 10U);
    } while (std::next_permutation(outputs.begin(), outputs.end(), byConnector));
}

TEST(DisplayIdentifiersTest, NoneIsZero) {
    const std::vector<Identity> outputs{{"A", {}}, {"B", {}}, {"C", {}}};
    const auto zero = [](std::string_view) { return 0U; };
    const auto last = [](std::string_view) { return 0xFFFFFFFFU; };

    EXPECT_THAT(displayIdentifiers(outputs, zero), testing::ElementsAre(1U, 2U, 3U));
    EXPECT_THAT(displayIdentifiers(outputs, last), testing::ElementsAre(0xFFFFFFFFU, 1U, 2U));
}

TEST(BuiltInConnectorTest, PanelsAreWiredToTheMachine) {
    for (const char* name :
         {"eDP", "eDP-1", "eDP1", "edp-1", "eDP-1-1", "LVDS", "LVDS-1", "LVDS1", "DSI-1", "DSI1"}) {
        EXPECT_TRUE(isBuiltInConnector(name)) << name;
    }
}

/// As in a Turkish session, where the small letter of I is another one.
class TurkishLocale {
public:
    TurkishLocale() {
        const std::string locale = (folder_.path() / "tr_TR.ISO8859-9").string();
#ifndef __APPLE__
        EXPECT_EQ(std::system(("localedef -i tr_TR -f ISO-8859-9 " + locale).c_str()), 0);
        ::setenv("LOCPATH", folder_.path().c_str(), 1);
#endif
        EXPECT_NE(std::setlocale(LC_ALL, "tr_TR.ISO8859-9"), nullptr);
    }
    ~TurkishLocale() {
        std::setlocale(LC_ALL, before_.c_str());
        ::unsetenv("LOCPATH");
    }
    TurkishLocale(const TurkishLocale&) = delete;
    TurkishLocale& operator=(const TurkishLocale&) = delete;

private:
    const std::string before_ = std::setlocale(LC_ALL, nullptr);
    const support::TemporaryFolder folder_;
};

TEST(BuiltInConnectorTest, PanelsAreWiredToTheMachineInEveryLanguage) {
    const TurkishLocale locale;
    ASSERT_NE(std::tolower('I'), 'i') << "or this would show nothing";

    EXPECT_TRUE(isBuiltInConnector("DSI-1"));
    EXPECT_TRUE(isBuiltInConnector("LVDS\xFD")) << "a letter there, but none of ASCII";
    EXPECT_FALSE(isBuiltInConnector("LVDSI"));
}

TEST(BuiltInConnectorTest, EverythingElseIsNot) {
    for (const char* name : {"", "DP-1", "HDMI-1", "DVI-I-1", "VGA-1", "DUMMY0", "e", "eD",
                             "DP-eDP", "LVDSX-1", "DSIB", "Virtual-1"}) {
        EXPECT_FALSE(isBuiltInConnector(name)) << name;
    }
}

}  // namespace
}  // namespace tavrel::layout
