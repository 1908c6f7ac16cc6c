#include "platform/layout/Layout.h"

#include <limits>

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {
namespace {

TEST(AreaTest, IsNothingAtTheOriginUnlessSaidOtherwise) {
    EXPECT_EQ(Area(), (Area{0, 0, 0, 0}));
}

TEST(RefreshTest, IsPixelsASecondByPixelsAFrame) {
    EXPECT_EQ(refreshMillihertz(148500000, 2200 * 1125), 60000);
    EXPECT_EQ(refreshMillihertz(173000000, 2576 * 1120), 59962);
}

TEST(RefreshTest, OfNonsenseIsZeroOrTheLargest) {
    EXPECT_EQ(refreshMillihertz(148500000, 0), 0);
    EXPECT_EQ(refreshMillihertz(148500000, -1), 0);
    EXPECT_EQ(refreshMillihertz(4294967295, 1), std::numeric_limits<int>::max());
}

TEST(ScaleTest, IsTheSameThoughItHasLostDigits) {
    EXPECT_TRUE(isSameScale(1.3333333, 1.333));
    EXPECT_TRUE(isSameScale(1.333, 1.3333333));
    EXPECT_FALSE(isSameScale(1.25, 1.252));
    EXPECT_FALSE(isSameScale(1.252, 1.25));
}

TEST(ScaleTest, IsOfferedByAModeThatNamesItOrNone) {
    EXPECT_TRUE(offersScale(fullHd, 3));
    const Mode mode{.width = 1920, .height = 1080, .scales = {1, 1.5}};
    EXPECT_TRUE(offersScale(mode, 1.5));
    EXPECT_FALSE(offersScale(mode, 3));
}

TEST(NumberOutputsTest, EachOutputGetsTheNumberOfItsMonitor) {
    Layout layout = Desk().monitor(monitorA).monitor(monitorB).monitor(monitorC);
    layout.outputs[1].identity.edid = {.vendor = 1, .product = 2, .serial = 3};

    numberOutputs(layout, {{{"Z", layout.outputs[1].identity.edid}, 77}});

    EXPECT_EQ(layout.outputs[0].display, stableHash("A/0/0/0"));
    EXPECT_EQ(layout.outputs[1].display, 77U);
    EXPECT_EQ(layout.outputs[2].display, stableHash("C/0/0/0"));
}

TEST(RotationTest, IsOneRotationAndAnyReflections) {
    for (const int good : {1, 2, 4, 8, 1 | 16, 2 | 32, 8 | 16 | 32}) {
        EXPECT_TRUE(isRotation(static_cast<Rotation>(good))) << good;
    }
    for (const int bad : {0, 3, 16, 64, 65, 1 | 64}) {
        EXPECT_FALSE(isRotation(static_cast<Rotation>(bad))) << bad;
    }
}

TEST(LayoutTest, HasRoomUpToItsLargestDesktop) {
    const Layout layout = Desk().limitedTo(3000, 2000);

    EXPECT_TRUE(layout.hasRoomFor({0, 0, 3000, 2000}));
    EXPECT_TRUE(layout.hasRoomFor({2999, 1999, 1, 1}));
    for (const Area& area :
         {Area{1, 0, 3000, 2000}, Area{0, 1, 3000, 2000}, Area{0, 0, 3001, 1}, Area{-1, 0, 10, 10},
          Area{0, -1, 10, 10}, Area{0, 0, 0, 10}, Area{0, 0, 10, 0}, Area{2147483647, 0, 10, 10}}) {
        EXPECT_FALSE(layout.hasRoomFor(area)) << testing::PrintToString(area);
    }
}

TEST(LayoutTest, KnowsItsOutputsByNumber) {
    const Layout layout = Desk().monitor(monitorA).monitor(monitorB).unplugged();

    EXPECT_EQ(layout.output(monitorA), &layout.outputs[0]);
    EXPECT_EQ(layout.output(monitorB), &layout.outputs[1]);
    EXPECT_EQ(layout.output(monitorC), nullptr);
}

}  // namespace
}  // namespace tavrel::layout
