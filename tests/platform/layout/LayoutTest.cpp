#include "platform/layout/Layout.h"

#include <limits>

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {
namespace {

TEST(RefreshTest, IsPixelsASecondByPixelsAFrame) {
    EXPECT_EQ(refreshMillihertz(148500000, 2200 * 1125), 60000);
    EXPECT_EQ(refreshMillihertz(173000000, 2576 * 1120), 59962);
}

TEST(RefreshTest, OfNonsenseIsZeroOrTheLargest) {
    EXPECT_EQ(refreshMillihertz(148500000, 0), 0);
    EXPECT_EQ(refreshMillihertz(148500000, -1), 0);
    EXPECT_EQ(refreshMillihertz(4294967295, 1), std::numeric_limits<int>::max());
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
