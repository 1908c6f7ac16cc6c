#include <gtest/gtest.h>

#include <ostream>

#include "tests/scenario/Stories.h"
#include "tests/scenario/VirtualDesktopStage.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

class RealStoryTest : public testing::TestWithParam<Scenario> {};

TEST_P(RealStoryTest, ComesTrue) {
    VirtualDesktopStage stage(GetParam().displays, TAVREL_PROGRAM);

    const auto failure = play(GetParam(), stage);

    EXPECT_FALSE(failure) << *failure;
}

INSTANTIATE_TEST_SUITE_P(Switching, RealStoryTest, testing::ValuesIn(switchingStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Start, RealStoryTest, testing::ValuesIn(recoveringStartStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Recovery, RealStoryTest, testing::ValuesIn(recoveryStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Crash, RealStoryTest, testing::ValuesIn(crashStories()),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace tavrel::scenario
