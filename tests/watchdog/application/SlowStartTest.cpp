#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>

#include "tests/watchdog/application/GuardedSwitchFixture.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

/// A watchdog that the system takes its time to load, until it is let go.
class SlowStartTest : public GuardedSwitchTest {
protected:
    SlowStartTest() {
        guarded.reset();
        beforeStart = [this] {
            if (starts == quickStarts && !isStarting.exchange(true)) {
                letStart.get_future().wait();
            }
        };
    }

    /// While what it uses is still there.
    ~SlowStartTest() override { endWithoutGoodbye(); }

    void begin(std::chrono::milliseconds longestWait) {
        beginWith(longestWait);
        ASSERT_TRUE(support::waitUntil([this] { return isStarting.load(); }));
    }
    std::future<ServerStatus> switchOffMeanwhile(DisplayID display) {
        auto status = std::async(std::launch::async,
                                 [=, this] { return guarded->setDisplayEnabled(display, false); });
        EXPECT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
        return status;
    }

    /// How many watchdogs come before the slow one.
    std::atomic<int> quickStarts = 0;
    std::atomic<bool> isStarting = false;
    std::promise<void> letStart;
};

TEST_F(SlowStartTest, NothingGoesOffUntilSomebodyIsThereToRememberIt) {
    std::atomic<int> madeByTheWatchdog = 0;
    decideOutcome = [&] {
        ++madeByTheWatchdog;
        return Outcome::succeeds;
    };
    begin(1h);
    auto status = switchOffMeanwhile(1);

    EXPECT_TRUE(isOn(1));
    letStart.set_value();

    EXPECT_EQ(status.get(), 0);
    EXPECT_FALSE(isOn(1));
    EXPECT_EQ(madeByTheWatchdog, 1);
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(SlowStartTest, WhatComesBackDoesNotWaitForIt) {
    server.switchFromOutside(2, false);
    begin(0ms);

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);

    EXPECT_TRUE(isOn(2));
    letStart.set_value();
}

TEST_F(SlowStartTest, DuringThatOfASuccessorNoEarlierChangeCountsAsTheOneThatTakesLong) {
    quickStarts = 1;
    useLongestWait(1h);
    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);
    skipped = 1h;
    killWatchdog();
    ASSERT_TRUE(support::waitUntil([this] { return isStarting.load(); }));

    auto status =
        std::async(std::launch::async, [this] { return guarded->setDisplayEnabled(1, true); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
    letStart.set_value();

    EXPECT_EQ(status.get(), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(2, false), 0) << "whose turn is after a repetition";
    EXPECT_EQ(guarded->changesEnded(), 3U) << "each was made once";
}

TEST_F(SlowStartTest, IsToldWhatWasHandedOverBefore) {
    server.switchFromOutside(2, false);
    begin(1h);
    EXPECT_FALSE(guarded->isHandedOver());

    guarded->handOver({2});
    EXPECT_FALSE(guarded->isHandedOver());
    letStart.set_value();

    EXPECT_TRUE(support::waitUntil([&] { return guarded->isHandedOver(); }));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(2));
}

TEST_F(SlowStartTest, AGoodbyeBeforeItLeavesNobodyOff) {
    server.switchFromOutside(2, false);
    begin(1h);
    guarded->handOver({2});

    auto goodbye = std::async(std::launch::async, [&] { guarded->goodbye(); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
    letStart.set_value();
    goodbye.wait();

    EXPECT_TRUE(isOn(2));
}

TEST_F(SlowStartTest, OneThatNeverComesLeavesTheChangesToTheApplication) {
    refusedStarts = 1000;
    begin(1h);
    auto status = switchOffMeanwhile(1);

    letStart.set_value();

    EXPECT_EQ(status.get(), 0);
    EXPECT_FALSE(isOn(1));
    guarded->goodbye();
    EXPECT_TRUE(isOn(1));
}

/// A watchdog that is put off for as long as there is nothing for it to do.
class LaterStartTest : public GuardedSwitchTest {};

TEST_F(LaterStartTest, ComesInTheEndWithoutBeingAskedForAnything) {
    beginWith(1h, 1ms);

    EXPECT_TRUE(support::waitUntil([&] { return starts == 1; }));
}

TEST_F(LaterStartTest, ComesBeforeTheFirstChange) {
    beginWith(1h, 1h);
    EXPECT_EQ(starts, 0);

    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);

    EXPECT_EQ(starts, 1);
    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(LaterStartTest, ComesWithTheFirstBeat) {
    beginWith(1h, 1h);

    guarded->beat();

    EXPECT_TRUE(support::waitUntil([&] { return starts == 1; }));
}

}  // namespace
}  // namespace tavrel::watchdog
