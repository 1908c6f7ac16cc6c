#include "platform/x11/crtc/CrtcNotes.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

/// Switching that takes every kind of step: the screen grows or shrinks, the CRTC gets a
/// transform and a mode, the primary role moves. B is right of A, or below it.
class SwitchFailureTest : public SwitchFixture, public testing::WithParamInterface<Area> {
protected:
    SwitchFailureTest() {
        start(SnapshotBuilder()
                  .output("A")
                  .on(0, 0)
                  .output("B")
                  .on(GetParam().x, GetParam().y)
                  .primary());
        Crtc& crtc = server.state.crtcs[1];
        crtc.supportsTransforms = true;
    }
};

TEST_P(SwitchFailureTest, ARefusedStepLeavesAllAsItWas) {
    const Snapshot whole = server.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    const int stepsOff = server.requests;
    ASSERT_EQ(on("B"), serverStatus::success);
    const int stepsOn = server.requests - stepsOff;
    ASSERT_EQ(stepsOff, 3) << "CRTC, screen, role";
    ASSERT_EQ(stepsOn, 3) << "screen, CRTC, role";

    for (int step = 1; step <= stepsOff; ++step) {
        server.firstRefusal = server.requests + step;
        server.refusals = 1;
        EXPECT_EQ(off("B"), serverStatus::cannotComplete) << "step " << step;
        EXPECT_EQ(server.state, whole) << "step " << step;
        EXPECT_TRUE(remembered.all().empty());
        EXPECT_FALSE(server.isGrabbed);
    }
    server.refusals = 0;
    ASSERT_EQ(off("B"), serverStatus::success);
    const Snapshot without = server.state;
    const auto memory = remembered.all();
    // A display that will not come on as it was gets a second attempt; this refuses both.
    server.ignoresCrtcs = true;
    EXPECT_EQ(on("B"), serverStatus::cannotComplete);
    EXPECT_EQ(server.state, without);
    EXPECT_EQ(remembered.all(), memory);
    EXPECT_FALSE(server.isGrabbed);
}

TEST_P(SwitchFailureTest, ScreenAndRoleAreOnlyPutBackWhereTheyHaveChanged) {
    server.firstRefusal = 1;
    server.refusals = 1;

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_EQ(server.requests, 2) << "the CRTC, and the CRTC as it was";
}

TEST_P(SwitchFailureTest, WhatWillNotComeOnAsItWasComesOnSomeOtherWay) {
    const Snapshot whole = server.state;
    ASSERT_EQ(off("B"), serverStatus::success);
    for (int step = 1; step <= 3; ++step) {
        server.firstRefusal = server.requests + step;
        server.refusals = 1;
        ASSERT_EQ(on("B"), serverStatus::success) << "step " << step;
        EXPECT_EQ(areaOf(server.state, "B"), step == 3 ? GetParam() : (Area{1920, 0, 1920, 1080}));
        EXPECT_EQ(primaryOf(server.state), step == 3 ? "A" : "B")
            << "the role alone is no reason for another attempt";
        server.state = whole;
        remembered.update([](const auto&) { return layout::Memory{}; });
        ASSERT_EQ(off("B"), serverStatus::success);
    }
}

TEST_P(SwitchFailureTest, AServerThatDoesNotDoWhatItSaysIsARefusal) {
    const Snapshot whole = server.state;
    server.ignoresCrtcs = true;
    EXPECT_EQ(off("B"), serverStatus::cannotComplete);
    EXPECT_EQ(server.state, whole);
}

TEST_P(SwitchFailureTest, AServerThatIsGoneOffersNoControl) {
    server.isGone = true;
    EXPECT_EQ(off("B"), serverStatus::notImplemented);
    EXPECT_EQ(on("B"), serverStatus::notImplemented);
}

TEST_P(SwitchFailureTest, AServerThatGoesInTheMiddleOffersNoControl) {
    server.lastMinuteChange = [this](Snapshot&) { server.isGone = true; };
    EXPECT_EQ(off("B"), serverStatus::notImplemented);
    EXPECT_EQ(remembered.all().size(), 1U) << "it may have gone off all the same";
    server.isGone = false;

    server.beforeGrab = [this] { server.isGone = true; };
    EXPECT_EQ(off("B"), serverStatus::notImplemented);
}

TEST_P(SwitchFailureTest, TheWayBackIsKeptWhenNobodyKnowsWhetherADisplayWentOff) {
    const Snapshot whole = server.state;
    server.lastMinuteChange = [this](Snapshot& state) {
        server.isGone = true;
        state.crtcs[1].mode = 0;
        state.crtcs[1].outputs.clear();
        state.outputs[1].crtc = 0;
    };
    ASSERT_EQ(off("B"), serverStatus::notImplemented);
    server.isGone = false;
    server.lastMinuteChange = {};

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), areaOf(whole, "B"));
    EXPECT_EQ(primaryOf(server.state), primaryOf(whole));
    EXPECT_TRUE(remembered.all().empty());
}

TEST_P(SwitchFailureTest, WhatAnotherProcessRemembersMeanwhileIsKept) {
    for (const int refusals : {0, 1}) {
        server.firstRefusal = server.requests + 1;
        server.refusals = refusals;
        const DisplayID other = 77 + static_cast<DisplayID>(refusals);
        server.beforeGrab = [&] {
            layout::RememberedOutputs elsewhere(store);
            elsewhere.update([&](layout::Memory memory) {
                memory.push_back({.display = other, .notes = encodeNotes({})});
                return memory;
            });
        };

        EXPECT_EQ(off("B"), refusals == 0 ? serverStatus::success : serverStatus::cannotComplete);
        server.beforeGrab = {};
        EXPECT_EQ(on("B"), serverStatus::success);

        EXPECT_NE(layout::find(remembered.all(), other), nullptr) << refusals << " refusals";
    }
}

TEST_P(SwitchFailureTest, AMonitorPulledInTheMiddleIsUnknown) {
    server.lastMinuteChange = [](Snapshot& state) { state.outputs[1].connected = false; };
    EXPECT_EQ(off("B"), serverStatus::illegalArgument);
    EXPECT_TRUE(remembered.all().empty());
}

TEST_P(SwitchFailureTest, NothingIsEverAskedWithoutTheGrab) {
    expectRoundTrip("A");
    expectRoundTrip("B");
    EXPECT_EQ(server.requestsWithoutGrab, 0);
    EXPECT_EQ(server.grabs, 4);
    EXPECT_FALSE(server.isGrabbed);
}

TEST_P(SwitchFailureTest, AStoreThatCannotBeWrittenDoesNotHinderARoundTrip) {
    store.setWritable(false);
    expectRoundTrip("B");
}

INSTANTIATE_TEST_SUITE_P(RightAndBelow, SwitchFailureTest,
                         testing::Values(Area{1920, 0, 1920, 1080}, Area{0, 1080, 1920, 1080}),
                         [](const auto& place) { return place.param.x > 0 ? "Right" : "Below"; });

}  // namespace
}  // namespace tavrel::x11
