#include <algorithm>

#include "tests/platform/x11/crtc/FaultyLayoutServer.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

/// Monitors that were unplugged while they were on: the server goes on driving them.
class UnpluggedTest : public SwitchFixture {
protected:
    void unplug(const std::vector<std::string>& names) {
        for (Output& output : server.state.outputs) {
            if (std::find(names.begin(), names.end(), output.name) != names.end()) {
                output.connected = false;
            }
        }
    }

    const Crtc& crtcShowing(const std::string& name) {
        return *server.state.crtc(outputNamed(server.state, name).crtc);
    }
};

TEST_F(UnpluggedTest, ThePanelComesOnAfterAllExternalsHaveGoneWithEveryCrtc) {
    start(SnapshotBuilder()
              .output("A")
              .on(0, 0)
              .output("B")
              .on(1920, 0)
              .output("C")
              .on(3840, 0)
              .output("eDP-1")
              .crtcsOf({"A", "B", "C"}));
    unplug({"A", "B", "C"});

    ASSERT_EQ(on("eDP-1"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "eDP-1"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
}

TEST_F(UnpluggedTest, ThePanelDoesNotStandBesideADesktopNobodySees) {
    start(SnapshotBuilder().output("A").modes({mode::huge}).on(0, 0, mode::huge).output("eDP-1"));
    unplug({"A"});

    ASSERT_EQ(on("eDP-1"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "eDP-1"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
    EXPECT_EQ(areaOf(server.state, "A"), std::nullopt) << "it would not fit any more";
}

TEST_F(UnpluggedTest, ACrtcIsTakenOverWithoutBeingSwitchedOffFirst) {
    start(SnapshotBuilder()
              .output("A")
              .modes({mode::huge})
              .on(0, 0, mode::huge)
              .output("eDP-1")
              .crtcsOf({"A"}));
    unplug({"A"});

    ASSERT_EQ(on("eDP-1"), serverStatus::success);

    EXPECT_EQ(server.requests, 2) << "CRTC, screen";
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
}

TEST_F(UnpluggedTest, ACrtcThatIsOffIsTakenBeforeOneThatDrivesNobodysMonitor) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").crtcsOf({"A", "B"}));
    unplug({"A"});

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(crtcShowing("B").id, outputNamed(server.state, "B").crtcs.back());
    EXPECT_NE(areaOf(server.state, "A"), std::nullopt) << "it is in nobody's way";
}

TEST_F(UnpluggedTest, ACrtcIsNotSharedWithAMonitorThatHasGone) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    ASSERT_EQ(off("B"), serverStatus::success);
    unplug({"A"});
    // Only A's CRTC is left to it.
    for (Output& output : server.state.outputs) {
        output.crtcs = {outputNamed(server.state, "A").crtcs.front()};
    }

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(crtcShowing("B").outputs, std::vector{outputNamed(server.state, "B").id});
}

TEST_F(UnpluggedTest, AScreenThatOnlyTheyFilledShrinksWhenAnotherGoesOff) {
    start(threeInARow());
    unplug({"C"});

    ASSERT_EQ(off("B"), serverStatus::success);

    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
    EXPECT_EQ(areaOf(server.state, "C"), std::nullopt);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(UnpluggedTest, ARefusalPutsThemBackToo) {
    start(threeInARow());
    unplug({"C"});
    const Snapshot before = server.state;
    FaultyLayoutServer faulty(server);
    faulty.refusesScreenSizes = true;
    use(faulty);

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
}

TEST_F(UnpluggedTest, OneThatWillNotGoOffDoesNotKeepAnotherFromComingOn) {
    start(SnapshotBuilder().output("A").modes({mode::huge}).on(0, 0, mode::huge).output("eDP-1"));
    unplug({"A"});
    server.firstRefusal = 1;
    server.refusals = 1;

    ASSERT_EQ(on("eDP-1"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "eDP-1"), (Area{0, 0, 1920, 1080}));
    EXPECT_NE(areaOf(server.state, "A"), std::nullopt);
    EXPECT_EQ(server.state.screen.width, 3840) << "as long as it is on";
}

}  // namespace
}  // namespace tavrel::x11
