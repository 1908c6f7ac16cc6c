#include "platform/x11/crtc/ScreenFit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <utility>

#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel::x11 {
namespace {

using layout::Area;
using testing::ElementsAre;
using testing::IsEmpty;

/// One monitor, whose screen has four pixels to the millimetre.
SnapshotBuilder fullHdScreen() {
    SnapshotBuilder builder;
    builder.output("A").on(0, 0);
    return builder;
}

LayoutPlan fitted(const Snapshot& snapshot, int width, int height, const ScreenSize& known = {}) {
    LayoutPlan plan;
    fitScreen(snapshot, {0, 0, width, height}, known, plan);
    return plan;
}

ScreenSize sized(int width, int height) {
    return {width, height, width / 4, height / 4};
}

TEST(ScreenBoundsTest, ReachFromTheOriginToTheLastThatIsOn) {
    const Snapshot snapshot = SnapshotBuilder()
                                  .output("A")
                                  .on(100, 40)
                                  .output("B")
                                  .on(0, 200, mode::small)
                                  .output("C")
                                  .build();

    EXPECT_EQ(boundsOfActive(snapshot), (Area{0, 0, 2020, 1224}));
    EXPECT_EQ(boundsOfActive(SnapshotBuilder().output("A").build()), Area());
}

TEST(ScreenBoundsTest, LeaveOutWhatNobodySeesAndWhatIsToGo) {
    const Snapshot snapshot = SnapshotBuilder()
                                  .output("A")
                                  .on(0, 0)
                                  .output("B")
                                  .on(1920, 1080, mode::huge)
                                  .disconnected()
                                  .output("C")
                                  .on(100, 100)
                                  .build();

    EXPECT_EQ(boundsOfActive(snapshot), (Area{0, 0, 2020, 1180}));
    EXPECT_EQ(boundsOfActive(snapshot, outputNamed(snapshot, "C").crtc), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(boundsOfActive(snapshot, 0, {2000, 10, 100, 100}), (Area{0, 0, 2100, 1180}));
    EXPECT_EQ(boundsOfActive(snapshot, 0, {10, 2000, 100, 100}), (Area{0, 0, 2020, 2100}));
}

TEST(ScreenFitTest, OneThatFitsStaysAsItIs) {
    EXPECT_EQ(fitted(fullHdScreen().build(), 1920, 1080), LayoutPlan());
}

TEST(ScreenFitTest, ItGrowsBeforeTheChange) {
    for (const auto& [width, height] : {std::pair(3840, 1080), std::pair(1920, 2160)}) {
        const LayoutPlan plan = fitted(fullHdScreen().build(), width, height);

        EXPECT_EQ(plan.screenBefore, sized(width, height));
        EXPECT_EQ(plan.screenAfter, std::nullopt);
    }
}

TEST(ScreenFitTest, ItShrinksAfterTheChange) {
    for (const auto& [width, height] : {std::pair(960, 1080), std::pair(1920, 540)}) {
        const LayoutPlan plan = fitted(fullHdScreen().build(), width, height);

        EXPECT_EQ(plan.screenBefore, std::nullopt);
        EXPECT_EQ(plan.screenAfter, sized(width, height));
    }
}

TEST(ScreenFitTest, ItGrowsOneWayAndShrinksTheOther) {
    const LayoutPlan wide = fitted(fullHdScreen().build(), 3840, 540);
    EXPECT_EQ(wide.screenBefore, sized(3840, 1080));
    EXPECT_EQ(wide.screenAfter, sized(3840, 540));

    const LayoutPlan high = fitted(fullHdScreen().build(), 960, 2160);
    EXPECT_EQ(high.screenBefore, sized(1920, 2160));
    EXPECT_EQ(high.screenAfter, sized(960, 2160));
}

TEST(ScreenFitTest, OneThatSomebodyKeepsWiderOrHigherStaysSo) {
    EXPECT_EQ(fitted(fullHdScreen().screen(2000, 1080).build(), 960, 540).screenAfter,
              sized(2000, 540));
    EXPECT_EQ(fitted(fullHdScreen().screen(1920, 1200).build(), 960, 540).screenAfter,
              sized(960, 1200));
}

TEST(ScreenFitTest, OneWithNothingOnItIsKeptByNobody) {
    const Snapshot dark = SnapshotBuilder().output("A").screen(5760, 2000).build();

    EXPECT_EQ(fitted(dark, 1920, 1080).screenAfter, sized(1920, 1080));
}

TEST(ScreenFitTest, ItIsNeverBelowTheServersLeast) {
    Snapshot snapshot = fullHdScreen().build();
    snapshot.minWidth = 1000;
    snapshot.minHeight = 700;

    EXPECT_EQ(fitted(snapshot, 500, 300).screenAfter, sized(1000, 700));
    EXPECT_EQ(fitted(snapshot, 1200, 800).screenAfter, sized(1200, 800));
}

TEST(ScreenFitTest, MillimetresAreRoundedAndNeverNone) {
    Snapshot snapshot = fullHdScreen().build();
    snapshot.screen.widthInMillimetres = 1000;
    snapshot.screen.heightInMillimetres = 0;

    EXPECT_EQ(fitted(snapshot, 2000, 2000).screenBefore, (ScreenSize{2000, 2000, 1042, 1}));
}

TEST(ScreenFitTest, MillimetresThatAreKnownAreUsed) {
    const ScreenSize known{3840, 540, 77, 88};

    const LayoutPlan plan = fitted(fullHdScreen().build(), 3840, 540, known);

    EXPECT_EQ(plan.screenBefore, sized(3840, 1080)) << "these pixels are others";
    EXPECT_EQ(plan.screenAfter, known);
}

TEST(ScreenFitTest, MillimetresFollowThoseThatAreKnownWhereTheScreenIsTooSmallToTell) {
    Snapshot dark = SnapshotBuilder().output("A").screen(64, 64).build();
    dark.screen.widthInMillimetres = dark.screen.heightInMillimetres = 15;
    const ScreenSize known{5760, 2160, 1440, 540};

    EXPECT_EQ(fitted(dark, 1920, 1080, known).screenBefore, sized(1920, 1080));
    EXPECT_EQ(fitted(dark, 1920, 1080).screenBefore, (ScreenSize{1920, 1080, 450, 253}));
    const ScreenSize smallToo{640, 640, 99, 640};
    EXPECT_EQ(fitted(dark, 1920, 1080, smallToo).screenBefore, (ScreenSize{1920, 1080, 450, 253}));
    const ScreenSize largeEnough{640, 640, 100, 640};
    EXPECT_EQ(fitted(dark, 1920, 1080, largeEnough).screenBefore,
              (ScreenSize{1920, 1080, 300, 1080}));
}

class GhostOnScreenTest : public testing::TestWithParam<Area> {
protected:
    /// A monitor, and beside it the place where one was until it was unplugged.
    static Snapshot withGhost() {
        return SnapshotBuilder()
            .output("A")
            .on(0, 0)
            .output("B")
            .on(GetParam().x, GetParam().y)
            .disconnected()
            .build();
    }
    static Area everything() {
        return {0, 0, GetParam().x + GetParam().width, GetParam().y + GetParam().height};
    }
};

TEST_P(GhostOnScreenTest, GoesOffWhereItDoesNotFitAnyMore) {
    const Snapshot snapshot = withGhost();

    const LayoutPlan plan = fitted(snapshot, 1920, 1080);

    EXPECT_THAT(plan.unseen, ElementsAre(outputNamed(snapshot, "B").crtc));
    EXPECT_EQ(plan.screenAfter, sized(1920, 1080));
}

TEST_P(GhostOnScreenTest, StaysWhereItFits) {
    const LayoutPlan plan = fitted(withGhost(), everything().width, everything().height);

    EXPECT_THAT(plan.unseen, IsEmpty());
}

TEST_P(GhostOnScreenTest, IsLeftToWhoeverGetsItsCrtc) {
    const Snapshot snapshot = withGhost();
    LayoutPlan plan{.crtcs = {{.crtc = outputNamed(snapshot, "A").crtc},
                              {.crtc = outputNamed(snapshot, "B").crtc, .mode = mode::small}}};

    fitScreen(snapshot, {0, 0, 1920, 1080}, {}, plan);

    EXPECT_THAT(plan.unseen, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(RightAndBelow, GhostOnScreenTest,
                         testing::Values(Area{1920, 0, 1920, 1080}, Area{0, 1080, 1920, 1080}),
                         [](const auto& place) { return place.param.x > 0 ? "Right" : "Below"; });

TEST(ScreenFitTest, WhatIsOffTakesNoRoomWhateverPlaceTheServerNames) {
    Snapshot contradictory = fullHdScreen().output("B").screen(3840, 2160).build();
    contradictory.crtcs[1].area = {1920, 1080, 1920, 1080};

    EXPECT_EQ(fitted(contradictory, 1920, 1080), LayoutPlan()) << "somebody keeps it larger";
}

TEST(ScreenFitTest, WhatIsSeenNeverGoesOff) {
    const Snapshot snapshot =
        SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0).build();

    EXPECT_THAT(fitted(snapshot, 1920, 1080).unseen, IsEmpty());
}

}  // namespace
}  // namespace tavrel::x11
