#include "platform/WallClock.h"

#include <gtest/gtest.h>

#include <ctime>

namespace tavrel {
namespace {

TEST(SystemWallClock, ShowsSecondsSinceTheReferenceDate) {
    constexpr std::time_t referenceDate = 978'307'200;

    const auto before = static_cast<double>(std::time(nullptr) - referenceDate);
    const double now = SystemWallClock().now().sinceReferenceDate;
    const auto after = static_cast<double>(std::time(nullptr) - referenceDate);

    // std::time may lag behind by a tick of the system's timer.
    EXPECT_GE(now, before);
    EXPECT_LE(now, after + 1.5);
}

TEST(SystemWallClock, KeepsFractions) {
    SystemWallClock clock;
    const WallTime start = clock.now();

    WallTime next = clock.now();
    while (next == start) {
        next = clock.now();
    }

    EXPECT_LT(next - start, 1);
}

}  // namespace
}  // namespace tavrel
