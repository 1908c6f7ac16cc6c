#include "watchdog/application/CrashLoopDetector.h"

#include <gtest/gtest.h>

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

TEST(CrashLoopDetectorTest, twoAreNeverTooMany) {
    CrashLoopDetector deaths;
    EXPECT_FALSE(deaths.add(1s));
    EXPECT_FALSE(deaths.add(1s));
}

TEST(CrashLoopDetectorTest, threeWithinTenSecondsAre) {
    CrashLoopDetector deaths;
    deaths.add(5s);
    deaths.add(9s);
    EXPECT_TRUE(deaths.add(15s));
}

TEST(CrashLoopDetectorTest, threeInMoreThanTenSecondsAreNot) {
    CrashLoopDetector deaths;
    deaths.add(5s);
    deaths.add(14s);
    EXPECT_FALSE(deaths.add(15s + 1ns));
}

TEST(CrashLoopDetectorTest, itIsTheLatestThreeThatCount) {
    CrashLoopDetector deaths;
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(deaths.add(i * 6s)) << i;
    }
    deaths.add(119s);
    EXPECT_TRUE(deaths.add(120s));
}

}  // namespace
}  // namespace tavrel::watchdog
