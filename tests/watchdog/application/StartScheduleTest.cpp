#include "watchdog/application/StartSchedule.h"

#include <gtest/gtest.h>

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

TEST(StartScheduleTest, TheFirstStartIsDueAtAnyTime) {
    const StartSchedule schedule;

    EXPECT_TRUE(schedule.isDue(0s));
    EXPECT_TRUE(schedule.isDue(-1h));
}

TEST(StartScheduleTest, AfterARefusalItIsTriedAgainASecondLater) {
    StartSchedule schedule;

    schedule.noteRefusal(10s);

    EXPECT_FALSE(schedule.isDue(11s - 1ns));
    EXPECT_TRUE(schedule.isDue(11s));
}

TEST(StartScheduleTest, RefusalAfterRefusalItIsTriedMoreAndMoreRarelyButForEver) {
    StartSchedule schedule;
    std::chrono::nanoseconds now = 0s;
    for (const auto pause : {1s, 2s, 4s, 8s, 16s, 32s, 60s, 60s, 60s}) {
        schedule.noteRefusal(now);

        EXPECT_FALSE(schedule.isDue(now + pause - 1ns)) << pause.count();
        now += pause;
        EXPECT_TRUE(schedule.isDue(now)) << pause.count();
    }
}

TEST(StartScheduleTest, AfterAStartTheNextRefusalCountsAsTheFirst) {
    StartSchedule schedule;
    schedule.noteRefusal(0s);
    schedule.noteRefusal(1s);
    schedule.noteStart();

    schedule.noteRefusal(100s);

    EXPECT_TRUE(schedule.isDue(101s));
}

TEST(StartScheduleTest, AfterACrashTheNextStartIsDueAtOnce) {
    StartSchedule schedule;

    schedule.noteCrash(10s);

    EXPECT_TRUE(schedule.isDue(10s));
}

TEST(StartScheduleTest, AfterACrashLoopTheNextStartIsDueMinutesLater) {
    StartSchedule schedule;
    schedule.noteCrash(10s);
    schedule.noteCrash(11s);

    schedule.noteCrash(12s);

    EXPECT_FALSE(schedule.isDue(5min + 12s - 1ns));
    EXPECT_TRUE(schedule.isDue(5min + 12s));
}

}  // namespace
}  // namespace tavrel::watchdog
