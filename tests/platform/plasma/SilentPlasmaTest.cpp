#include <chrono>

#include "tests/platform/plasma/LivePlasmaTest.h"

namespace tavrel {
namespace {

using std::chrono::steady_clock;

class SilentPlasmaTest : public LivePlasmaTest {
protected:
    SilentPlasmaTest() { options.timeout = std::chrono::milliseconds(500); }
};

TEST_F(SilentPlasmaTest, ChangesNothingAndIsAnsweredForByWhatItSaidLast) {
    ASSERT_TRUE(support::waitUntil([&] {
        return server->setDisplayEnabled(middle, false) == serverStatus::success &&
               server->now()->isOnline(middle) && !isActive(middle);
    }));
    desktop->pause();

    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(server->setDisplayEnabled(middle, true), serverStatus::notImplemented);
        const auto moment = server->now();
        EXPECT_TRUE(server->canSwitch());
        EXPECT_FALSE(moment->isCurrent());
        EXPECT_TRUE(moment->isActive(left));
        EXPECT_FALSE(moment->isActive(middle));
    }
    desktop->resume();

    EXPECT_TRUE(support::waitUntil(
        [&] { return server->setDisplayEnabled(middle, true) == serverStatus::success; }));
    EXPECT_TRUE(support::waitUntil([&] {
        const auto moment = server->now();
        return moment->isCurrent() && moment->isActive(middle);
    }));
}

TEST_F(SilentPlasmaTest, IsUnknownToANewcomer) {
    desktop->pause();
    PlasmaWindowServer newcomer(store, options);

    EXPECT_FALSE(newcomer.canSwitch());
    EXPECT_EQ(newcomer.setDisplayEnabled(middle, true), serverStatus::notImplemented);
    EXPECT_FALSE(newcomer.now()->isCurrent()) << "it may have displays all the same";
}

TEST_F(SilentPlasmaTest, IsForgottenOnceItIsKnownToBeGone) {
    ASSERT_TRUE(support::waitUntil([&] { return isActive(left); }));
    desktop->pause();
    ASSERT_TRUE(isActive(left));
    desktop->kill();

    EXPECT_TRUE(support::waitUntil([&] { return !isActive(left); }));
    EXPECT_FALSE(server->canSwitch());
}

TEST_F(SilentPlasmaTest, KeepsNobodyWaitingTwice) {
    PlasmaWindowServer patient(store, {.displayName = desktop->displayName()});
    ASSERT_TRUE(patient.now()->isActive(left));
    desktop->pause();
    constexpr int questions = 30;

    const auto begin = steady_clock::now();
    for (int i = 0; i < questions; ++i) {
        EXPECT_TRUE(patient.now()->isActive(left));
    }

    EXPECT_LT(steady_clock::now() - begin,
              questions / 2 * layout::LastWord<layout::Layout>::questionTimeout);
    desktop->resume();
}

/// A change that was on its way when nobody answered may still come true.
TEST_F(SilentPlasmaTest, KeepsTheWayBackOfAChangeInDoubt) {
    const auto atFirst = desktop->screens();
    ASSERT_TRUE(support::waitUntil(
        [&] { return server->setDisplayEnabled(middle, true) == serverStatus::success; }));
    desktop->pause();
    ASSERT_EQ(server->setDisplayEnabled(middle, false), serverStatus::notImplemented);
    desktop->resume();

    EXPECT_TRUE(support::waitUntil(
        [&] { return server->setDisplayEnabled(middle, true) == serverStatus::success; }));
    EXPECT_TRUE(support::waitUntil([&] { return isActive(middle); }));
    EXPECT_EQ(desktop->screens(), atFirst);
}

}  // namespace
}  // namespace tavrel
