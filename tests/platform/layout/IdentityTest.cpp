#include "platform/layout/Identity.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>

#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel::x11 {
namespace {

constexpr EdidNumbers someone{.vendor = 1, .product = 2, .serial = 3};
constexpr EdidNumbers other{.vendor = 1, .product = 2, .serial = 4};

DisplayID idIn(const Snapshot& snapshot, const std::string& name, const IdentifierHash& hash) {
    return displayIdentifiers(snapshot, hash).at(outputNamed(snapshot, name).id);
}

TEST(StableHashTest, GivesTheNumbersItAlwaysGave) {
    // Users' stores hold such numbers. These are FNV-1a's published ones.
    EXPECT_EQ(stableHash(""), 0x811c9dc5U);
    EXPECT_EQ(stableHash("a"), 0xe40c292cU);
    EXPECT_EQ(stableHash("foobar"), 0xbf9cf968U);
}

TEST(DisplayIdentifiersTest, AMonitorKeepsItsNumber) {
    const Snapshot snapshot = SnapshotBuilder().output("DP-1").edid(someone).build();
    EXPECT_EQ(displayNamed(snapshot, "DP-1"), stableHash("DP-1/1/2/3"));
}

TEST(DisplayIdentifiersTest, ConnectorAndMonitorBothCount) {
    const Snapshot snapshot = SnapshotBuilder()
                                  .output("DP-1")
                                  .edid(someone)
                                  .output("DP-2")
                                  .edid(someone)
                                  .output("DP-3")
                                  .build();
    Snapshot swapped = snapshot;
    swapped.outputs[0].edid = other;
    EXPECT_NE(displayNamed(snapshot, "DP-1"), displayNamed(snapshot, "DP-2"))
        << "twins differ by connector";
    EXPECT_NE(displayNamed(snapshot, "DP-1"), displayNamed(swapped, "DP-1"));
    EXPECT_EQ(displayNamed(snapshot, "DP-2"), displayNamed(swapped, "DP-2"));
}

TEST(DisplayIdentifiersTest, NothingElseOfItCounts) {
    const Snapshot off = SnapshotBuilder().output("DP-1").edid(someone).build();
    Snapshot on = SnapshotBuilder()
                      .output("DP-9")
                      .output("DP-1")
                      .edid(someone)
                      .modes({mode::huge})
                      .on(500, 500, mode::huge)
                      .build();
    EXPECT_EQ(displayNamed(off, "DP-1"), displayNamed(on, "DP-1"));
}

TEST(DisplayIdentifiersTest, CollisionsAreResolvedTheSameWayInWhateverOrderTheyAreListed) {
    const auto alike = [](std::string_view) { return 7U; };
    Snapshot snapshot = SnapshotBuilder()
                            .output("B")
                            .output("A")
                            .edid(other)
                            .output("D")
                            .edid(someone)
                            .output("C")
                            .build();
    const auto byXid = [](const Output& a, const Output& b) { return a.id < b.id; };
    std::sort(snapshot.outputs.begin(), snapshot.outputs.end(), byXid);
    do {
        EXPECT_EQ(idIn(snapshot, "A", alike), 7U);
        EXPECT_EQ(idIn(snapshot, "B", alike), 8U);
        EXPECT_EQ(idIn(snapshot, "C", alike), 9U);
        EXPECT_EQ(idIn(snapshot, "D", alike), 10U);
    } while (std::next_permutation(snapshot.outputs.begin(), snapshot.outputs.end(), byXid));
}

TEST(DisplayIdentifiersTest, ACollisionDoesNotDependOnTheServersNumbers) {
    const auto alike = [](std::string_view) { return 7U; };
    Snapshot snapshot = SnapshotBuilder().output("A").output("B").build();
    const DisplayID before = idIn(snapshot, "B", alike);
    std::swap(snapshot.outputs[0].id, snapshot.outputs[1].id);
    EXPECT_EQ(idIn(snapshot, "B", alike), before);
}

TEST(DisplayIdentifiersTest, NoneIsZero) {
    const Snapshot snapshot = SnapshotBuilder().output("A").output("B").output("C").build();
    const auto zero = [](std::string_view) { return 0U; };
    const auto last = [](std::string_view) { return 0xFFFFFFFFU; };
    for (const IdentifierHash& hash : {IdentifierHash(zero), IdentifierHash(last)}) {
        std::set<DisplayID> numbers;
        for (const auto& [output, number] : displayIdentifiers(snapshot, hash)) {
            EXPECT_NE(number, 0U);
            numbers.insert(number);
        }
        EXPECT_EQ(numbers.size(), 3U);
    }
}

TEST(DisplayIdentifiersTest, OnlyConnectedOutputsAreDisplays) {
    const Snapshot snapshot = SnapshotBuilder().output("A").output("B").disconnected().build();
    EXPECT_EQ(connectedOutput(snapshot, displayNamed(snapshot, "A")), &snapshot.outputs[0]);
    EXPECT_EQ(connectedOutput(snapshot, displayNamed(snapshot, "B")), nullptr);
    EXPECT_EQ(connectedOutput(snapshot, 0), nullptr);
}

TEST(BuiltInConnectorTest, PanelsAreWiredToTheMachine) {
    for (const char* name :
         {"eDP", "eDP-1", "eDP1", "edp-1", "eDP-1-1", "LVDS", "LVDS-1", "LVDS1", "DSI-1", "DSI1"}) {
        EXPECT_TRUE(isBuiltInConnector(name)) << name;
    }
}

TEST(BuiltInConnectorTest, EverythingElseIsNot) {
    for (const char* name : {"", "DP-1", "HDMI-1", "DVI-I-1", "VGA-1", "DUMMY0", "e", "eD",
                             "DP-eDP", "LVDSX-1", "DSIB", "Virtual-1"}) {
        EXPECT_FALSE(isBuiltInConnector(name)) << name;
    }
}

}  // namespace
}  // namespace tavrel::x11
