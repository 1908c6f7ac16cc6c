#include "platform/x11/hotkeys/Keyboard.h"

#include <gtest/gtest.h>

namespace tavrel::x11 {
namespace {

TEST(KeyPressFilterTest, EachPressAfterAReleaseCounts) {
    KeyPressFilter filter;

    for (std::uint32_t time = 100; time < 200; time += 10) {
        EXPECT_TRUE(filter.pressed(25, time));
        filter.released(25, time + 5);
    }
}

TEST(KeyPressFilterTest, AReleaseAndAPressAtOneTimeAreARepeat) {
    KeyPressFilter filter;

    EXPECT_TRUE(filter.pressed(25, 100));
    for (std::uint32_t time = 400; time < 500; time += 10) {
        filter.released(25, time);
        EXPECT_FALSE(filter.pressed(25, time));
    }

    filter.released(25, 600);
    EXPECT_TRUE(filter.pressed(25, 601));
}

TEST(KeyPressFilterTest, APressWithoutAReleaseIsARepeat) {
    KeyPressFilter filter;
    filter.setRepeatsAreDetectable(true);

    EXPECT_TRUE(filter.pressed(25, 100));
    EXPECT_FALSE(filter.pressed(25, 400));
    EXPECT_FALSE(filter.pressed(25, 430));

    filter.released(25, 450);
    EXPECT_TRUE(filter.pressed(25, 450))
        << "however quick the finger, where repeats are detectable";
}

TEST(KeyPressFilterTest, KeepsKeysApart) {
    KeyPressFilter filter;

    EXPECT_TRUE(filter.pressed(25, 100));
    EXPECT_TRUE(filter.pressed(59, 100));
    filter.released(59, 110);
    EXPECT_TRUE(filter.pressed(60, 110));
    EXPECT_FALSE(filter.pressed(25, 120));
}

}  // namespace
}  // namespace tavrel::x11
