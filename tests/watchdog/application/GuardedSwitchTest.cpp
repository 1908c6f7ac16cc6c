#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "tests/watchdog/application/GuardedSwitchFixture.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

TEST_F(GuardedSwitchTest, AnswersWhatTheSwitchWithoutAWatchdogWould) {
    EXPECT_TRUE(guarded->canSwitch());
    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(99, false), 1001);

    server.setCanControl(false);

    EXPECT_FALSE(guarded->canSwitch());
}

TEST_F(GuardedSwitchTest, WithoutAGoodbyeWhatIsOffComesBack) {
    guarded->setDisplayEnabled(1, false);
    guarded->setDisplayEnabled(2, false);

    endWithoutGoodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(GuardedSwitchTest, AGoodbyeBringsBackWhatIsOff) {
    guarded->setDisplayEnabled(1, false);

    guarded->goodbye();
    guarded->goodbye();

    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, AfterAGoodbyeWhatGoesOffStaysOff) {
    guarded->goodbye();

    guarded->setDisplayEnabled(1, false);
    guarded.reset();

    EXPECT_FALSE(isOn(1));
}

TEST_F(GuardedSwitchTest, ABeatStartsAWatchdogWhereThereIsNone) {
    refusedStarts = 1;
    killWatchdog();
    ASSERT_TRUE(support::waitUntil([&] { return refusedStarts == 0; }));

    now = now.load() + 1min;
    guarded->beat();

    EXPECT_TRUE(support::waitUntil([&] { return starts == 2; }));
}

TEST_F(GuardedSwitchTest, AChangeIsNoSignThatTheMainThreadIsRunning) {
    guarded->setDisplayEnabled(1, false);

    endWithoutGoodbye();

    EXPECT_EQ(use.heartbeats, 0);
}

TEST_F(GuardedSwitchTest, ABeatThatTheWatchdogWasToldOfIsNotRepeated) {
    guarded->beat();

    guarded->setDisplayEnabled(1, false);
    endWithoutGoodbye();

    EXPECT_EQ(use.heartbeats, 1);
}

TEST_F(GuardedSwitchTest, SleepsUntilThereIsSomethingToDo) {
    constexpr int changes = 100;
    for (int change = 0; change < changes; ++change) {
        guarded->setDisplayEnabled(1, change % 2 != 0);
    }

    // And once at the start, and when the watchdog says that it is ready, which takes two.
    EXPECT_LE(use.looks, changes + 3);
}

TEST_F(GuardedSwitchTest, AWatchdogThatDiesIdleIsReplacedWithoutARequest) {
    guarded->setDisplayEnabled(1, false);

    killWatchdog();

    ASSERT_TRUE(support::waitUntil([&] { return starts == 2; }));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, RequestsFromManyThreadsGetTheirOwnAnswersOneChangeAtATime) {
    constexpr int rounds = 200;
    std::atomic<int> wrong = 0;

    forEachDisplayAtOnce([&](DisplayID display) {
        for (int round = 0; round < rounds; ++round) {
            // Half of them ask for displays that are not there, so that answers differ.
            const bool isThere = display % 2 != 0;
            const ServerStatus status =
                guarded->setDisplayEnabled(isThere ? display : display + 100, round % 2 != 0);
            wrong += status != (isThere ? 0 : 1001) ? 1 : 0;
        }
    });

    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(displays.overlaps(), 0);
    EXPECT_EQ(server.takeChanges().size(), displayCount * rounds);
}

TEST_F(GuardedSwitchTest, EveryStatusIsTrueHoweverOftenWatchdogsCrash) {
    std::mt19937 random(20'240'401);
    int crashes = 0;
    decideOutcome = [&] {
        const auto drawn = random() % 6;
        crashes += drawn < 2 ? 1 : 0;
        return drawn == 0   ? Outcome::crashesBefore
               : drawn == 1 ? Outcome::crashesAfter
                            : Outcome::succeeds;
    };
    std::atomic<int> untrue = 0;
    std::atomic<int> refused = 0;

    forEachDisplayAtOnce([&](DisplayID display) {
        bool isOnNow = true;
        for (int round = 0; round < 60; ++round) {
            const ServerStatus status = guarded->setDisplayEnabled(display, !isOnNow);
            if (status == serverStatus::success) {
                isOnNow = !isOnNow;
            } else if (status == serverStatus::cannotComplete && isOnNow) {
                ++refused;
            } else {
                ++untrue;
            }
        }
        // Known to be off only if the last answer said so.
        untrue += displays.isOn(server, display) == isOnNow ? 0 : 1;
    });

    EXPECT_EQ(untrue, 0);
    EXPECT_GT(refused, 0);
    EXPECT_GT(crashes, 50);
    EXPECT_EQ(displays.overlaps(), 0);
    // The last watchdog must not crash: nobody would switch on what is off.
    decideOutcome = {};
    endWithoutGoodbye();
    for (DisplayID display = 1; display <= displayCount; ++display) {
        EXPECT_TRUE(isOn(display)) << display;
    }
}

}  // namespace
}  // namespace tavrel::watchdog
