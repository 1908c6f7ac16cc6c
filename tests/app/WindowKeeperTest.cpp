#include <gtest/gtest.h>

#include "app/WindowKeeper.h"

namespace tavrel {
namespace {

constexpr QRect left(0, 0, 1920, 1080);
constexpr QRect right(1920, 0, 1920, 1080);

TEST(WindowKeeperTest, AWindowThatIsWholeOnAScreenStays) {
    const QRect frame(100, 100, 520, 486);

    EXPECT_EQ(keptVisible(frame, {left, right}), frame);
}

TEST(WindowKeeperTest, AWindowAcrossTwoScreensStays) {
    const QRect frame(1700, 100, 520, 486);

    EXPECT_EQ(keptVisible(frame, {left, right}), frame);
}

TEST(WindowKeeperTest, AWindowWhoseScreenIsGoneMovesWholeToAnother) {
    const QRect kept = keptVisible(QRect(2500, 300, 520, 486), {left});

    EXPECT_TRUE(left.contains(kept));
    EXPECT_EQ(kept.size(), QSize(520, 486));
}

TEST(WindowKeeperTest, AWindowPartlyOffScreenMovesToTheScreenThatShowsMostOfIt) {
    const QRect kept = keptVisible(QRect(1700, 900, 520, 486), {right, left});

    EXPECT_TRUE(right.contains(kept));
}

TEST(WindowKeeperTest, OnAScreenThatIsTooSmallTheWindowsTopLeftShows) {
    const QRect small(1000, 1000, 400, 300);

    EXPECT_EQ(keptVisible(QRect(0, 0, 520, 486), {small}).topLeft(), small.topLeft());
}

TEST(WindowKeeperTest, WithNoScreenAtAllAWindowStays) {
    const QRect frame(100, 100, 520, 486);

    EXPECT_EQ(keptVisible(frame, {}), frame);
}

}  // namespace
}  // namespace tavrel
