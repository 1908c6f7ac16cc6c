#include <chrono>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/simulated/SimulatedScheduler.h"
#include "tests/simulated/SimulatedWallClock.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class SimulatedSchedulerTest : public testing::Test {
protected:
    Task note(const std::string& what) {
        return [this, what] { log.push_back(what); };
    }

    SimulatedScheduler scheduler;
    MainQueue& main = scheduler.mainQueue();
    BackgroundQueue& background = scheduler.backgroundQueue();
    std::vector<std::string> log;
};

TEST_F(SimulatedSchedulerTest, TimeMovesOnlyWhenMoved) {
    main.asyncAfter(1ms, note("late"));
    main.async(note("now"));

    scheduler.settle();
    EXPECT_THAT(log, ElementsAre("now"));
    scheduler.advance(1ms);
    EXPECT_THAT(log, ElementsAre("now", "late"));
    EXPECT_EQ(scheduler.now(), 1ms);
}

TEST_F(SimulatedSchedulerTest, MainTasksRunInTheOrderTheyBecomeDue) {
    main.asyncAfter(2ms, note("c"));
    main.asyncAfter(1ms, note("a"));
    main.asyncAfter(1ms, note("b"));

    scheduler.advance(1s);

    EXPECT_THAT(log, ElementsAre("a", "b", "c"));
}

TEST_F(SimulatedSchedulerTest, ATimerTicksUntilInvalidated) {
    auto timer = main.repeat(1s, note("tick"));
    scheduler.advance(2500ms);
    EXPECT_THAT(log, ElementsAre("tick", "tick"));

    timer->invalidate();
    scheduler.advance(10s);

    EXPECT_EQ(log.size(), 2U);
}

TEST_F(SimulatedSchedulerTest, ATickMayEndItsOwnTimer) {
    std::unique_ptr<RepeatingTimer> timer;
    timer = main.repeat(1s, [&] {
        log.emplace_back("tick");
        timer.reset();
    });

    scheduler.advance(10s);

    EXPECT_THAT(log, ElementsAre("tick"));
}

TEST_F(SimulatedSchedulerTest, AJobThatSleepsLetsOthersRunMeanwhile) {
    background.async([&] {
        log.emplace_back("job starts");
        scheduler.sleep(10ms);
        log.emplace_back("job ends");
    });
    main.asyncAfter(5ms, note("main"));

    scheduler.advance(20ms);

    EXPECT_THAT(log, ElementsAre("job starts", "main", "job ends"));
}

TEST_F(SimulatedSchedulerTest, ASleepOnTheMainThreadDoesNothing) {
    scheduler.sleep(10s);

    EXPECT_EQ(scheduler.now(), 0s);
}

TEST_F(SimulatedSchedulerTest, TheMainQueueKnowsItsThread) {
    bool jobIsOnMain = true;
    background.async([&] { jobIsOnMain = main.isCurrent(); });

    scheduler.settle();

    EXPECT_TRUE(main.isCurrent());
    EXPECT_FALSE(jobIsOnMain);
}

std::string orderOfFiveJobs(std::uint64_t seed) {
    SimulatedScheduler scheduler(seed);
    std::string order;
    for (const char name : {'a', 'b', 'c', 'd', 'e'}) {
        scheduler.backgroundQueue().async([&order, name] { order += name; });
    }
    scheduler.settle();
    return order;
}

TEST_F(SimulatedSchedulerTest, TheSeedDecidesTheOrderOfJobs) {
    EXPECT_EQ(orderOfFiveJobs(1), orderOfFiveJobs(1));
    bool differs = false;
    for (std::uint64_t seed = 2; seed < 10; ++seed) {
        differs = differs || orderOfFiveJobs(seed) != orderOfFiveJobs(1);
    }
    EXPECT_TRUE(differs);
}

TEST_F(SimulatedSchedulerTest, ShuttingDownEndsSleepersAndDropsAllOtherWork) {
    background.async([&] {
        scheduler.sleep(1h);
        log.emplace_back("sleeper ended");
        main.async(note("never"));
    });
    scheduler.settle();
    background.async(note("never"));
    main.async(note("never"));

    scheduler.shutDown();

    EXPECT_THAT(log, ElementsAre("sleeper ended"));
    background.async(note("never"));
    scheduler.settle();
    EXPECT_EQ(scheduler.pendingBackgroundJobs(), 0U);
}

TEST_F(SimulatedSchedulerTest, MainTasksAndTicksCanBeDropped) {
    main.async(note("never"));
    main.asyncAfter(1h, note("never"));
    background.async(note("job"));
    const auto timer = main.repeat(1s, note("never"));

    scheduler.dropMainTasks();
    scheduler.advance(2h);

    EXPECT_THAT(log, ElementsAre("job"));
    main.async(note("later"));
    scheduler.settle();
    EXPECT_THAT(log, ElementsAre("job", "later"));
}

TEST_F(SimulatedSchedulerTest, TheWallClockFollowsTimeAndIsSteppedOnItsOwn) {
    SimulatedWallClock clock(scheduler);
    const WallTime before = clock.now();

    scheduler.advance(1500ms);
    EXPECT_DOUBLE_EQ(clock.now() - before, 1.5);

    clock.step(-10);
    EXPECT_DOUBLE_EQ(clock.now() - before, -8.5);
    EXPECT_EQ(scheduler.now(), 1500ms);
}

TEST_F(SimulatedSchedulerTest, AProcessGoesOnWhileTheMainThreadOfTheOtherIsBlocked) {
    main.async(note("first"));
    scheduler.mainQueue(SimulatedScheduler::Process::second).asyncAfter(1ms, note("second"));

    scheduler.advanceWithMainBlocked(2ms, [] { return false; });
    EXPECT_THAT(log, ElementsAre("second"));
    scheduler.settle();
    EXPECT_THAT(log, ElementsAre("second", "first"));
}

TEST_F(SimulatedSchedulerTest, TheEndOfAProcessLeavesTheOtherItsTasks) {
    main.async(note("first"));
    scheduler.mainQueue(SimulatedScheduler::Process::second).async(note("second"));

    scheduler.dropMainTasks();
    scheduler.settle();

    EXPECT_THAT(log, ElementsAre("second"));
}

}  // namespace
}  // namespace tavrel
