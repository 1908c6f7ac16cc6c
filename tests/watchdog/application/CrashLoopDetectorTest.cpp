#include "watchdog/application/StartSchedule.h"

#include <gtest/gtest.h>

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

TEST(CrashLoopDetectorTest, TwoCrashesAreNeverTooMany) {
    CrashLoopDetector detector;

    EXPECT_FALSE(detector.add(1s));
    EXPECT_FALSE(detector.add(1s));
}

TEST(CrashLoopDetectorTest, ThreeCrashesWithinTenSecondsAreTooMany) {
    CrashLoopDetector detector;
    detector.add(5s);
    detector.add(9s);

    EXPECT_TRUE(detector.add(15s));
}

TEST(CrashLoopDetectorTest, ThreeCrashesInMoreThanTenSecondsAreNotTooMany) {
    CrashLoopDetector detector;
    detector.add(5s);
    detector.add(14s);

    EXPECT_FALSE(detector.add(15s + 1ns));
}

TEST(CrashLoopDetectorTest, OnlyTheLatestThreeCrashesCount) {
    CrashLoopDetector detector;
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(detector.add(i * 6s)) << i;
    }
    detector.add(119s);

    EXPECT_TRUE(detector.add(120s));
}

}  // namespace
}  // namespace tavrel::watchdog
