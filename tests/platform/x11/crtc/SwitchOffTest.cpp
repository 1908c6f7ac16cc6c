#include <algorithm>

#include "platform/x11/crtc/CrtcNotes.h"
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
    start(threeInARow());
    server.state.minWidth = 4000;

    ASSERT_EQ(off("C"), serverStatus::success);
    EXPECT_EQ(server.state.screen.width, 4000);
    ASSERT_EQ(off("B"), serverStatus::success);
    EXPECT_EQ(server.state.screen.width, 4000);
}

TEST_F(SwitchOffTest, HandsOnThePrimaryRole) {
    start(SnapshotBuilder().output("A").on(1920, 0).output("B").on(0, 500));

    ASSERT_EQ(off("A"), serverStatus::success);

    EXPECT_EQ(primaryOf(server.state), "B");
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

TEST_F(SwitchOffTest, TakesNoNoticeOfTheOrderInWhichMirrorsAreListed) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A").output("C").on(1920, 0));
    server.beforeReading = [](Snapshot& state) {
        auto& mirrors = state.crtcs.front().outputs;
        ASSERT_EQ(mirrors.size(), 2U);
        std::reverse(mirrors.begin(), mirrors.end());
    };

    EXPECT_EQ(off("C"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "C"), std::nullopt);
}

TEST_F(SwitchOffTest, OfWhatIsOffAlreadyDoesNothing) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    const Snapshot before = server.state;
    const auto memory = remembered.all();
    const int requests = server.requests;

    EXPECT_EQ(off("B"), serverStatus::success);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(remembered.all(), memory);
    EXPECT_EQ(server.requests, requests);
}

TEST_F(SwitchOffTest, OfTheLastOneIsRefusedAndNothingIsStored) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B"));
    const Snapshot before = server.state;

    EXPECT_EQ(off("A"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
    EXPECT_EQ(server.grabs, 0);
    EXPECT_EQ(store.writes(), 0U);
}

TEST_F(SwitchOffTest, OfOneThatBecomesTheLastAtTheLastMomentIsRefused) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0));
    server.lastMinuteChange = [](Snapshot& state) {
        state.crtcs[1].mode = 0;
        state.crtcs[1].area = {};
        state.crtcs[1].outputs.clear();
        state.outputs[1].crtc = 0;
    };

    EXPECT_EQ(off("A"), serverStatus::cannotComplete);

    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(server.requests, 0);
    EXPECT_TRUE(remembered.all().empty());
    EXPECT_FALSE(server.isGrabbed);
}

TEST_F(SwitchOffTest, OfTheLastOneBesideAnUnpluggedOneIsRefused) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0).disconnected());

    EXPECT_EQ(off("A"), serverStatus::cannotComplete);
}

TEST_F(SwitchOffTest, OfADisconnectedMonitorIsRefusedAsUnknown) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").disconnected());
    EXPECT_EQ(off("B"), serverStatus::illegalArgument);
    EXPECT_EQ(on("B"), serverStatus::illegalArgument);
    EXPECT_EQ(server.requests, 0);
}

TEST_F(SwitchOffTest, StoresWhatItWasBeforeItGoes) {
    start(threeInARow());
    const DisplayID display = displayNamed(server.state, "B");
    const Xid crtc = outputNamed(server.state, "B").crtc;
    std::optional<bool> storedInTime;
    server.beforeGrab = [&] { storedInTime = remembered.all().size() == 1; };

    ASSERT_EQ(off("B"), serverStatus::success);

    EXPECT_EQ(storedInTime, true);
    const layout::RememberedOutput expected{
        .display = display,
        .mode = server.state.mode(mode::fullHd)->description,
        .area = {1920, 0, 1920, 1080},
        .notes = encodeNotes(
            {.modeHint = mode::fullHd, .crtcHint = crtc, .screen = {5760, 1080, 1440, 270}})};
    EXPECT_EQ(remembered.all(), layout::Memory{expected});
}

TEST_F(SwitchOffTest, ThatIsRefusedLeavesWhatWasRememberedBefore) {
    start(threeInARow());
    const Snapshot before = server.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    const layout::Memory memory = remembered.all();
    // Another program has switched it on, a little lower.
    server.state = before;
    server.state.crtcs[1].area.y = 40;
    server.state.screen.height = 1120;
    server.firstRefusal = server.requests + 1;
    server.refusals = 1;

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_EQ(remembered.all(), memory);
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
