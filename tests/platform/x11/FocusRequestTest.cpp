#include "platform/x11/OwnWindow.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/platform/x11/ServerProcess.h"
#include "tests/support/FocusWishes.h"
#include "tests/support/VirtualDesktop.h"

namespace tavrel::x11 {
namespace {

TEST(FocusRequestTest, IsAWishOfThisMoment) {
    const support::VirtualDesktop desktop({.monitors = 1});
    support::FocusWishes wishes(desktop.displayName());
    constexpr xcb_window_t window = 0x123456;

    const xcb_timestamp_t before = wishes.timeNow();
    EXPECT_TRUE(requestFocus(window, {.displayName = desktop.displayName()}));
    const xcb_timestamp_t after = wishes.timeNow();

    ASSERT_EQ(wishes.heard().size(), 1U);
    EXPECT_EQ(wishes.heard().front().window, window);
    EXPECT_GE(wishes.heard().front().time, before);
    EXPECT_LE(wishes.heard().front().time, after);
}

TEST(FocusRequestTest, FailsWhenTheServerIsSilent) {
    const support::VirtualDesktop desktop({.monitors = 1});
    const ServerProcess process(desktop);
    process.pause();

    // Whoever waits for the server waits for good.
    EXPECT_FALSE(requestFocus(
        1, {.displayName = desktop.displayName(), .timeout = std::chrono::milliseconds(100)}));
}

TEST(FocusRequestTest, FailsWithoutAServer) {
    EXPECT_FALSE(requestFocus(1, {.displayName = ":4093"}));
}

}  // namespace
}  // namespace tavrel::x11
