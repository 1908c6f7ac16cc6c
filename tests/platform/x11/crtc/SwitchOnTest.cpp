#include <algorithm>

#include "platform/x11/crtc/ScreenFit.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

class SwitchOnTest : public SwitchFixture {
protected:
    Crtc& crtcOf(const std::string& name) {
        const Xid id = outputNamed(server.state, name).crtcs.front();
        return *std::find_if(server.state.crtcs.begin(), server.state.crtcs.end(),
                             [id](const Crtc& each) { return each.id == id; });
    }

    Output& outputOf(const std::string& name) {
        return *std::find_if(server.state.outputs.begin(), server.state.outputs.end(),
                             [&](const Output& each) { return each.name == name; });
    }

    void move(const std::string& name, int x, int y) {
        crtcOf(name).area.x = x;
        crtcOf(name).area.y = y;
        const Area bounds = boundsOfActive(server.state);
        server.state.screen = {bounds.width, bounds.height, 500, 300};
    }
};

TEST_F(SwitchOnTest, RestoresModePlaceAndRole) {
    start(SnapshotBuilder()
              .output("A")
              .on(1280, 300)
              .output("B")
              .on(0, 0, mode::small)
              .primary()
              .output("C")
              .on(3200, 0, mode::huge)
              .modes({mode::fullHd, mode::huge}));
    expectRoundTrip("A");
    expectRoundTrip("B");
    expectRoundTrip("C");
}

TEST_F(SwitchOnTest, RestoresRotationAndReflection) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").rotatable().on(
        1920, 0, mode::fullHd, turnedLeft | mirroredX));
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1080, 1920}));
    expectRoundTrip("B");
}

TEST_F(SwitchOnTest, RestoresATransform) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0));
    Crtc& crtc = crtcOf("B");
    crtc.supportsTransforms = true;
    crtc.transform = {.matrix = {2 << 16, 0, 0, 0, 2 << 16, 0, 0, 0, 1 << 16},
                      .filter = "bilinear",
                      .parameters = {1, 2}};
    ASSERT_TRUE(server.setTransform({crtc.id, crtc.transform}));
    crtc.area = {1920, 0, 3840, 2160};
    server.state.screen = {5760, 2160, 1440, 540};
    expectRoundTrip("B");

    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_TRUE(server.setTransform({crtc.id, Transform()}));
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 3840, 2160})) << "set anew";
}

TEST_F(SwitchOnTest, OfADisplayNeverSeenOnUsesThePreferredModeAtTheRight) {
    start(SnapshotBuilder()
              .output("A")
              .on(0, 0)
              .output("B")
              .on(1920, 56, mode::small)
              .output("C")
              .modes({mode::huge, mode::fullHd}));
    ASSERT_EQ(on("C"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "C"), (Area{3200, 56, 3840, 2160}));
    EXPECT_EQ(server.state.screen, (ScreenSize{7040, 2216, 1760, 554}));
    EXPECT_EQ(primaryOf(server.state), "A");
}

TEST_F(SwitchOnTest, OfTheOnlyDisplayPutsItAtTheOrigin) {
    start(SnapshotBuilder().output("A").output("B").screen(5760, 1080));
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(server.state.screen, (ScreenSize{1920, 1080, 480, 270}));
}

TEST_F(SwitchOnTest, FindsTheModeByItsTimingsNotItsNumber) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0, mode::small));
    ASSERT_EQ(off("B"), serverStatus::success);
    // The server was started anew and numbers its modes otherwise.
    for (Mode& each : server.state.modes) {
        each.id += 500;
    }
    for (Output& output : server.state.outputs) {
        output.modes = {mode::fullHd + 500, mode::small + 500};
    }
    crtcOf("A").mode = mode::fullHd + 500;
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1280, 1024}));
}

TEST_F(SwitchOnTest, PrefersTheVeryModeAmongSeveralWithTheSameTimings) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0, mode::small));
    Mode twin = *server.state.mode(mode::small);
    twin.id = 2000;
    server.state.modes.push_back(twin);
    outputOf("B").modes = {mode::fullHd, twin.id, mode::small};
    expectRoundTrip("B");
}

TEST_F(SwitchOnTest, FallsBackWhenTheModeIsGone) {
    start(SnapshotBuilder().output("B").on(0, 0, mode::small).output("A").on(1280, 0));
    ASSERT_EQ(off("B"), serverStatus::success);
    outputOf("B").modes = {mode::fullHd};
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{3200, 0, 1920, 1080}));
    EXPECT_EQ(primaryOf(server.state), "B") << "the role comes back all the same";
}

TEST_F(SwitchOnTest, FallsBackWhenThePlaceIsTaken) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    move("C", 1920, 0);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{3840, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "C"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, FallsBackWhenThePlaceIsTakenInPart) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    move("C", 3839, 1079);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{5759, 1079, 1920, 1080}));
}

TEST_F(SwitchOnTest, APlaceThatOnlyTouchesOthersIsFree) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    move("C", 3840, 1080);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, AMirrorMayTakeItsPlaceAgain) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(0, 0, mode::small));
    expectRoundTrip("B");
    expectRoundTrip("A");
}

TEST_F(SwitchOnTest, FallsBackWhenThePlaceLeavesTheLimits) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(0, 1080));
    ASSERT_EQ(off("B"), serverStatus::success);
    server.state.maxHeight = 2000;
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, IsRefusedWhenNoPlaceIsWithinTheLimits) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").limits(3839, 2000));
    const Snapshot before = server.state;
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);
    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
    server.state.maxWidth = 3840;
    EXPECT_EQ(on("B"), serverStatus::success);
}

TEST_F(SwitchOnTest, IsRefusedWithoutAFreeCrtc) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").crtcsOf({"A"}));
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);
    ASSERT_EQ(off("A"), serverStatus::success);
    EXPECT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(on("A"), serverStatus::cannotComplete);
}

TEST_F(SwitchOnTest, IsRefusedWithoutAMode) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").modes({}));
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);
}

TEST_F(SwitchOnTest, TakesAnotherCrtcWhenItsOwnIsBusy) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0).output("C").crtcsOf(
        {"B", "C"}));
    outputOf("B").crtcs = {crtcOf("B").id, outputOf("C").crtcs.back()};
    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_EQ(on("C"), serverStatus::success);
    EXPECT_EQ(outputOf("C").crtc, outputOf("B").crtcs.front());
    ASSERT_EQ(off("A"), serverStatus::success);
    // C stands right of A, where B was; so B has to go further right.
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(outputOf("B").crtc, outputOf("B").crtcs.back());
    EXPECT_EQ(areaOf(server.state, "B"), (Area{3840, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, PrefersItsOldCrtc) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").output("C").on(1920, 0));
    outputOf("C").crtcs = {outputOf("B").crtcs.front(), crtcOf("C").id};
    expectRoundTrip("C");
}

TEST_F(SwitchOnTest, FallsBackToAnUprightCrtcWhereTheOldOneCannotTurnAnyMore) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").rotatable().on(1920, 0, mode::fullHd,
                                                                            turnedLeft));
    ASSERT_EQ(off("B"), serverStatus::success);
    crtcOf("B").supportedRotations = upright;
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, StaysTurnedInANewPlace) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").rotatable().on(1920, 0, mode::fullHd,
                                                                            turnedLeft));
    ASSERT_EQ(off("B"), serverStatus::success);
    move("A", 200, 0);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{2120, 0, 1080, 1920}));
}

TEST_F(SwitchOnTest, ACloneJoinsItsCrtcAgain) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    const Xid shared = outputOf("A").crtc;
    for (const char* name : {"A", "B"}) {
        ASSERT_EQ(off(name), serverStatus::success);
        ASSERT_EQ(on(name), serverStatus::success);
        EXPECT_EQ(outputOf("A").crtc, shared);
        EXPECT_EQ(outputOf("B").crtc, shared);
        EXPECT_EQ(primaryOf(server.state), "A");
    }
}

TEST_F(SwitchOnTest, ACloneMirrorsWithItsOwnCrtcWhenItMayNotShareAnyMore) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    ASSERT_EQ(off("B"), serverStatus::success);
    outputOf("A").clones.clear();
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
    EXPECT_NE(outputOf("B").crtc, outputOf("A").crtc);
}

TEST_F(SwitchOnTest, ACloneDoesNotJoinACrtcThatShowsSomethingElseNow) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    ASSERT_EQ(off("B"), serverStatus::success);
    crtcOf("A").mode = mode::small;
    crtcOf("A").area = {0, 0, 1280, 1024};
    server.state.screen = {1280, 1024, 320, 256};
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1280, 1024}));
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, ThePrimaryRoleComesBackOnlyToItsOwner) {
    start(threeInARow());
    for (const char* name : {"A", "B"}) {
        ASSERT_EQ(off(name), serverStatus::success);
    }
    EXPECT_EQ(primaryOf(server.state), "C");
    ASSERT_EQ(on("A"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "A");
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "A") << "B had it on loan";
}

TEST_F(SwitchOnTest, ThePrimaryRoleComesBackToWhoHasItOnLoanAsLongAsTheOwnerIsOff) {
    start(threeInARow());
    ASSERT_EQ(off("A"), serverStatus::success);
    expectRoundTrip("B");
    EXPECT_EQ(primaryOf(server.state), "B");
    ASSERT_EQ(on("A"), serverStatus::success);
    EXPECT_EQ(primaryOf(server.state), "A");
}

TEST_F(SwitchOnTest, OfWhatIsOnAlreadyDoesNothing) {
    start(threeInARow());
    const Snapshot before = server.state;
    EXPECT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
    EXPECT_EQ(server.grabs, 0);
    EXPECT_EQ(store.writes(), 0U);
}

TEST_F(SwitchOnTest, ForgetsWhatItHasRestored) {
    start(threeInARow());
    expectRoundTrip("B");
    EXPECT_TRUE(remembered.all().empty());
}

TEST_F(SwitchOnTest, RestoresWhatAnEarlierRunRemembered) {
    start(threeInARow());
    const Snapshot before = server.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    RememberedOutputs nextRun(store);
    ASSERT_EQ(switchDisplay(server, nextRun, displayNamed(before, "B"), true),
              serverStatus::success);
    EXPECT_EQ(server.state, before);
}

TEST_F(SwitchOnTest, MakesDoWithoutAMalformedMemory) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    store.replaceFromOutside(rememberedOutputsKey, "[{\"display\":");
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{5760, 0, 1920, 1080}));
}

}  // namespace
}  // namespace tavrel::x11
