#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

class SwitchOffTest : public SwitchFixture {};

TEST_F(SwitchOffTest, LeavesTheRestWhereItIs) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "B"), std::nullopt);
    EXPECT_EQ(areaOf(server.state, "C"), (Area{3840, 0, 1920, 1080}));
    EXPECT_EQ(server.state.screen, (ScreenSize{5760, 1080, 1440, 270}));
}

TEST_F(SwitchOffTest, ShrinksTheScreenToWhatIsStillOn) {
    start(threeInARow());
    ASSERT_EQ(off("C"), serverStatus::success);
    EXPECT_EQ(server.state.screen, (ScreenSize{3840, 1080, 960, 270}));
}

TEST_F(SwitchOffTest, KeepsAScreenLargerThanItsMonitors) {
    start(threeInARow().screen(8000, 1080));
    ASSERT_EQ(off("C"), serverStatus::success);
    EXPECT_EQ(server.state.screen.width, 8000);
    expectRoundTrip("B");
}

TEST_F(SwitchOffTest, NeverShrinksBelowTheServersLeast) {
    SnapshotBuilder builder = threeInARow();
    Snapshot snapshot = builder.build();
    snapshot.minWidth = 4000;
    server = SimulatedRandr(snapshot);
    ASSERT_EQ(off("C"), serverStatus::success);
    EXPECT_EQ(server.state.screen.width, 4000);
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(server.state.screen.width, 4000);
}

TEST_F(SwitchOffTest, KeepsTheScreenWhenNothingIsOnAnyMore) {
    start(SnapshotBuilder().output("A").on(0, 0));
    ASSERT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
}

TEST_F(SwitchOffTest, HandsThePrimaryRoleToTheOneNearestTheOrigin) {
    start(SnapshotBuilder().output("A").on(3840, 0).output("B").on(1920, 0).output("C").on(0, 500));
    ASSERT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "C");
}

TEST_F(SwitchOffTest, LeavesThePrimaryRoleOfOthersAlone) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "A");
}

TEST_F(SwitchOffTest, KeepsThePrimaryRoleWhenNobodyElseIsOn) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B"));
    ASSERT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "A");
}

TEST_F(SwitchOffTest, WorksWithoutAnyNotionOfAPrimary) {
    start(threeInARow().withoutPrimary());
    expectRoundTrip("A");
}

TEST_F(SwitchOffTest, OfACloneKeepsTheOtherRunning) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    ASSERT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), std::nullopt);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(primaryOf(server.state), "B");
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
}

TEST_F(SwitchOffTest, OfWhatIsOffAlreadyDoesNothing) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0));
    ASSERT_EQ(off("B"), serverStatus::success);
    const Snapshot before = server.state;
    const auto memory = remembered.all();
    const int requests = server.requests;
    EXPECT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(server.state, before);
    EXPECT_EQ(remembered.all(), memory);
    EXPECT_EQ(server.requests, requests);
}

TEST_F(SwitchOffTest, OfTheLastOneIsNotRefusedHere) {
    start(SnapshotBuilder().output("A").on(0, 0));
    EXPECT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), std::nullopt);
    EXPECT_EQ(on("A"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
}

TEST_F(SwitchOffTest, OfADisconnectedMonitorIsRefusedAsUnknown) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").disconnected());
    EXPECT_EQ(off("B"), serverStatus::illegalArgument);
    EXPECT_EQ(on("B"), serverStatus::illegalArgument);
    EXPECT_EQ(server.requests, 0);
}

TEST_F(SwitchOffTest, StoresWhatItWasBeforeItGoes) {
    start(threeInARow());
    std::optional<bool> storedInTime;
    const DisplayID display = displayNamed(server.state, "B");
    server.beforeGrab = [&] { storedInTime = remembered.all().size() == 1; };
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(storedInTime, true);
    ASSERT_EQ(remembered.all().size(), 1U);
    const RememberedOutput was = remembered.all().front();
    EXPECT_EQ(was.display, display);
    EXPECT_EQ(was.area, (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(was.mode, server.state.mode(mode::fullHd)->timings);
    EXPECT_EQ(was.rotation, upright);
    EXPECT_FALSE(was.primary);
    EXPECT_EQ(was.screen, (ScreenSize{5760, 1080, 1440, 270}));
}

TEST_F(SwitchOffTest, DecidesByWhatItSeesWithTheServerGrabbed) {
    start(threeInARow());
    server.lastMinuteChange = [](Snapshot& state) {
        state.crtcs[1].area.y = 40;
        state.screen.height = 1120;
    };
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(remembered.all().at(0).area.y, 40);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 40, 1920, 1080}));
}

}  // namespace
}  // namespace tavrel::x11
