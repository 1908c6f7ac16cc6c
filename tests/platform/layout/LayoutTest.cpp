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

TEST(TransformTest, IsARotation) {
    EXPECT_EQ(rotationOf(0), rotate0);
    EXPECT_EQ(rotationOf(1), rotate90);
    EXPECT_EQ(rotationOf(3), rotate270);
    EXPECT_EQ(rotationOf(4), rotate0 | reflectX);
    EXPECT_EQ(rotationOf(7), rotate270 | reflectX);
}

TEST(TransformTest, IsNoneOfOtherNumbers) {
    EXPECT_EQ(rotationOf(8), std::nullopt);
    EXPECT_EQ(rotationOf(static_cast<std::uint32_t>(-1)), std::nullopt);
}

TEST(TransformTest, ThereAndBackIsTheSame) {
    for (std::uint32_t transform = 0; transform < 8; ++transform) {
        const std::optional<Rotation> rotation = rotationOf(transform);

        ASSERT_TRUE(rotation.has_value());
        EXPECT_TRUE(isRotation(*rotation));
        EXPECT_EQ(transformOf(*rotation), transform);
    }
}

TEST(TransformTest, ReflectionAtTheOtherAxisIsOneWithHalfATurn) {
    EXPECT_EQ(transformOf(rotate0 | reflectY), 6U);
    EXPECT_EQ(transformOf(rotate90 | reflectY), 7U);
    EXPECT_EQ(transformOf(rotate0 | reflectX | reflectY), 2U);
    EXPECT_EQ(transformOf(rotate90 | reflectX | reflectY), 3U);
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
