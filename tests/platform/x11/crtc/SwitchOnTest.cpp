#include <algorithm>

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
        const Area bounds = boundsOfAll(server.state);
        server.state.screen = {bounds.width, bounds.height, 500, 300};
    }

    void damageFirstNotes() {
        remembered.update([](layout::Memory memory) {
            memory.front().notes = R"({"crtcHint":-1})";
            return memory;
        });
    }

    /// By a process that has not seen the display on.
    ServerStatus onByWhatIsRememberedAlone(const std::string& name) {
        layout::LastSeen nothingSeen;
        return switchDisplay(server, remembered, nothingSeen, displayNamed(server.state, name),
                             true);
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

TEST_F(SwitchOnTest, WhatAnotherProgramHasSwitchedOnIsForgotten) {
    start(threeInARow());
    const Snapshot before = server.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_EQ(off("C"), serverStatus::success);
    server.state = before;

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(server.state, before) << "it stays as the other program has set it up";
    ASSERT_THAT(remembered.all(), testing::SizeIs(1));
    EXPECT_EQ(remembered.all().front().display, displayNamed(before, "C"));
}

TEST_F(SwitchOnTest, RestoresRotationAndReflection) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").rotatable().on(
        1920, 0, mode::fullHd, layout::rotate90 | layout::reflectX));
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
    const int requests = server.requests;
    expectRoundTrip("B");
    EXPECT_EQ(server.requests, requests + 4) << "CRTC and screen, twice: it has it still";

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

TEST_F(SwitchOnTest, FallsBackWhenThePlaceIsTaken) {
    start(SnapshotBuilder().output("B").on(1920, 0).output("A").on(0, 0).output("C").on(3840, 0));
    ASSERT_EQ(off("B"), serverStatus::success);
    move("C", 1920, 0);

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{3840, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "C"), (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(primaryOf(server.state), "B") << "the role comes back all the same";
}

TEST_F(SwitchOnTest, AMirrorMayTakeItsPlaceAgain) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(0, 0, mode::small));
    expectRoundTrip("B");
    expectRoundTrip("A");
}

TEST_F(SwitchOnTest, IsRefusedWhenNoPlaceIsWithinTheLimits) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").limits(3199, 2000));
    const Snapshot before = server.state;
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);
    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
    server.state.maxWidth = 3200;
    EXPECT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1280, 1024})) << "the smaller mode";
}

TEST_F(SwitchOnTest, IsRefusedWithoutAFreeCrtc) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").crtcsOf({"A"}));
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);

    offFromOutside("A");

    EXPECT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(on("A"), serverStatus::cannotComplete);
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
                                                                            layout::rotate90));
    ASSERT_EQ(off("B"), serverStatus::success);
    crtcOf("B").supportedRotations = layout::rotate0;
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, StaysTurnedInANewPlace) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").rotatable().on(1920, 0, mode::fullHd,
                                                                            layout::rotate90));
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

TEST_F(SwitchOnTest, ACloneMirrorsWithItsOwnCrtcBesideOneItMayNotShareWith) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A").output("C").clones("A"));
    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
    EXPECT_NE(outputOf("B").crtc, outputOf("A").crtc);
}

TEST_F(SwitchOnTest, ACloneReturnsToItsPlaceThoughTheOtherHasLeftIt) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A"));
    ASSERT_EQ(off("B"), serverStatus::success);
    move("A", 1920, 0);
    ASSERT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
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

TEST_F(SwitchOnTest, ThePrimaryRoleGoesBackTheWayItCame) {
    start(threeInARow());
    ASSERT_EQ(off("A"), serverStatus::success);
    expectRoundTrip("B");
    EXPECT_EQ(primaryOf(server.state), "B") << "on loan, as long as A is off";

    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_EQ(on("A"), serverStatus::success);
    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(primaryOf(server.state), "A") << "B had it on loan";
}

TEST_F(SwitchOnTest, OfWhatIsOnAlreadyDoesNothing) {
    start(threeInARow());
    const Snapshot before = server.state;
    EXPECT_EQ(on("B"), serverStatus::success);
    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
    EXPECT_EQ(server.grabs, 1) << "to look";
    EXPECT_FALSE(server.isGrabbed);
    EXPECT_EQ(store.writes(), 0U);
}

TEST_F(SwitchOnTest, OfWhatTheServerHasYetToFindMakesItLookWhileItServesOthers) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B"));
    server.state.outputs[1].connected = false;
    server.newMonitors = [](Snapshot& state) { state.outputs[1].connected = true; };

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_NE(areaOf(server.state, "B"), std::nullopt);
    EXPECT_EQ(server.looksWithGrab, 0);
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
    layout::RememberedOutputs nextRun(store);
    ASSERT_EQ(switchDisplay(server, nextRun, lastSeen, displayNamed(before, "B"), true),
              serverStatus::success);
    EXPECT_EQ(server.state, before);
}

TEST_F(SwitchOnTest, MakesDoWithoutMalformedNotes) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    damageFirstNotes();

    ASSERT_EQ(onByWhatIsRememberedAlone("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{5760, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, MakesDoWithoutAllThatIsRememberedBesideMalformedNotes) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    ASSERT_EQ(off("C"), serverStatus::success);
    damageFirstNotes();

    ASSERT_EQ(onByWhatIsRememberedAlone("C"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "C"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(SwitchOnTest, RestoresWhatVersion01Remembered) {
    start(threeInARow());
    const Snapshot before = server.state;
    offFromOutside("B");
    const std::string display = std::to_string(displayNamed(before, "B"));
    store.replaceFromOutside(
        layout::rememberedOutputsKey,
        R"([{"area":{"height":1080,"width":1920,"x":1920,"y":0},"crtcHint":11,"display":)" +
            display +
            R"(,"mirrors":[],"mode":{"dotClock":124416000,"flags":0,"height":1080,)"
            R"("horizontalSkew":0,"horizontalSyncEnd":0,"horizontalSyncStart":0,)"
            R"("horizontalTotal":2020,"verticalSyncEnd":0,"verticalSyncStart":0,)"
            R"("verticalTotal":1120,"width":1920},"modeHint":1000,"primary":false,)"
            R"("primaryOnLoan":false,"rotation":1,"screen":{"height":1080,)"
            R"("heightInMillimetres":270,"width":5760,"widthInMillimetres":1440},)"
            R"("transform":{"filter":"","matrix":[65536,0,0,0,65536,0,0,0,65536],)"
            R"("parameters":[]}}])");

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(server.state, before);
}

}  // namespace
}  // namespace tavrel::x11
