#include "platform/guard/DeathCount.h"

#include <gtest/gtest.h>

namespace tavrel::guard {
namespace {

using namespace std::chrono_literals;

TEST(DeathCountTest, twoAreNeverTooMany) {
    DeathCount deaths;
    EXPECT_FALSE(deaths.add(1s));
    EXPECT_FALSE(deaths.add(1s));
}

TEST(DeathCountTest, threeWithinTenSecondsAre) {
    DeathCount deaths;
    deaths.add(5s);
    deaths.add(9s);
    EXPECT_TRUE(deaths.add(15s));
}

TEST(DeathCountTest, threeInMoreThanTenSecondsAreNot) {
    DeathCount deaths;
    deaths.add(5s);
    deaths.add(14s);
    EXPECT_FALSE(deaths.add(15s + 1ns));
}

TEST(DeathCountTest, itIsTheLatestThreeThatCount) {
    DeathCount deaths;
    for (int i = 0; i < 20; ++i) {
        EXPECT_FALSE(deaths.add(i * 6s)) << i;
    }
    deaths.add(119s);
    EXPECT_TRUE(deaths.add(120s));
}

}  // namespace
}  // namespace tavrel::guard
