#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

#include "tests/watchdog/application/GuardedSwitchFixture.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

/// A watchdog's change that hangs until it is let go, and the rescues beside it.
class RescueTest : public GuardedSwitchTest {
protected:
    RescueTest() {
        useLongestWait(0ms);
        decideOutcome = [this] {
            if (isHolding.exchange(false)) {
                hasBegun.set_value();
                letGo.get_future().wait();
            }
            return Outcome::succeeds;
        };
    }

    /// While what it uses is still there.
    ~RescueTest() override { endWithoutGoodbye(); }

    std::future<ServerStatus> hangWhileSwitchingOff(DisplayID display) {
        return hangDuring(display, false);
    }
    std::future<ServerStatus> hangWhileSwitchingOn(DisplayID display) {
        return hangDuring(display, true);
    }

    /// While the change that hangs still does, which is let go after.
    void expectToComeBackMeanwhile(DisplayID display) {
        auto rescue = std::async(std::launch::async,
                                 [=, this] { return guarded->setDisplayEnabled(display, true); });
        EXPECT_TRUE(
            support::waitUntil([&] { return rescue.wait_for(0s) == std::future_status::ready; }));
        letGo.set_value();
        EXPECT_EQ(rescue.get(), 0);
    }

    std::atomic<bool> isHolding = true;
    std::promise<void> hasBegun;
    std::promise<void> letGo;

private:
    std::future<ServerStatus> hangDuring(DisplayID display, bool enabled) {
        auto status = std::async(
            std::launch::async, [=, this] { return guarded->setDisplayEnabled(display, enabled); });
        hasBegun.get_future().wait();
        return status;
    }
};

TEST_F(RescueTest, DoesNotWaitBehindAChangeThatHangs) {
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);

    EXPECT_TRUE(isOn(2));
    EXPECT_EQ(guarded->changesEnded(), 1U);
    letGo.set_value();
    EXPECT_EQ(hanging.get(), 0) << "it was about another display";
}

TEST_F(RescueTest, IsInAHurryOnceTheChangeBeforeItHasTakenLong) {
    useLongestWait(1h);
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);
    skipped = 1h;

    expectToComeBackMeanwhile(2);
}

TEST_F(RescueTest, DoesNotWaitBehindAnotherSwitchOnThatHangs) {
    useLongestWait(1h);
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOn(1);
    skipped = 1h;

    expectToComeBackMeanwhile(2);
    EXPECT_EQ(hanging.get(), 0);
}

TEST_F(RescueTest, WaitsForItsTurnBehindAChangeThatHasJustBegun) {
    useLongestWait(1h);
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);

    auto rescue =
        std::async(std::launch::async, [&] { return guarded->setDisplayEnabled(2, true); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
    letGo.set_value();

    EXPECT_EQ(rescue.get(), 0);
    EXPECT_EQ(hanging.get(), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(3, false), 0) << "whose turn is after a repetition";
    EXPECT_EQ(guarded->changesEnded(), 3U);
}

TEST_F(RescueTest, TakesNothingFromTheAnswerOfASwitchOffBehindWhichItWaits) {
    useLongestWait(1h);
    auto hanging = hangWhileSwitchingOff(1);

    auto rescue =
        std::async(std::launch::async, [&] { return guarded->setDisplayEnabled(1, true); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
    letGo.set_value();

    EXPECT_EQ(hanging.get(), 0);
    EXPECT_EQ(rescue.get(), 0);
    EXPECT_TRUE(isOn(1));
}

TEST_F(RescueTest, IsTheLastWordAboutItsDisplayThoughTheHangingChangeIsMadeAfterIt) {
    auto hanging = hangWhileSwitchingOff(1);

    EXPECT_EQ(guarded->setDisplayEnabled(1, true), 0);
    letGo.set_value();

    EXPECT_EQ(hanging.get(), 1004);
    EXPECT_EQ(guarded->setDisplayEnabled(2, false), 0) << "whose turn is after the repetition";
    EXPECT_TRUE(isOn(1));
}

TEST_F(RescueTest, AWatchdogThatHangsIsReplacedOnceThereIsNoTimeToWaitForIt) {
    reported.say({{{1, true}, {2, true}}});
    auto hanging = hangWhileSwitchingOff(1);

    guarded->hurry();

    EXPECT_TRUE(support::waitUntil([&] { return starts == 2; }));
    letGo.set_value();
    EXPECT_EQ(hanging.get(), 1004);
}

TEST_F(RescueTest, CallsOffASwitchOffThatIsStillWaiting) {
    auto hanging = hangWhileSwitchingOff(1);
    auto waiting =
        std::async(std::launch::async, [&] { return guarded->setDisplayEnabled(2, false); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);
    letGo.set_value();

    EXPECT_EQ(waiting.get(), 1004);
    EXPECT_EQ(hanging.get(), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(3, false), 0);
    EXPECT_TRUE(isOn(2));
}

TEST_F(RescueTest, IsForgottenOnceItsTurnHasCome) {
    auto hanging = hangWhileSwitchingOff(1);
    guarded->setDisplayEnabled(1, true);
    letGo.set_value();
    hanging.wait();

    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);

    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(RescueTest, HandsOverWithoutWaitingBehindAChangeThatHangs) {
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);

    guarded->handOver({2});
    EXPECT_TRUE(guarded->isHandedOver());
    letGo.set_value();
    hanging.wait();
    endWithoutGoodbye();

    EXPECT_TRUE(isOn(2));
}

}  // namespace
}  // namespace tavrel::watchdog
