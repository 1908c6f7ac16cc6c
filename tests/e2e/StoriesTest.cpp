#include <gtest/gtest.h>

#include <ostream>

#include "tests/scenario/Stories.h"
#include "tests/scenario/VirtualDesktopStage.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

class RealStory : public testing::TestWithParam<Scenario> {};

TEST_P(RealStory, ComesTrue) {
    VirtualDesktopStage stage(GetParam().displays, TAVREL_PROGRAM);
    const auto failure = play(GetParam(), stage);
    EXPECT_FALSE(failure) << *failure;
}

INSTANTIATE_TEST_SUITE_P(Switching, RealStory, testing::ValuesIn(switchingStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Recovery, RealStory, testing::ValuesIn(recoveryStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Crash, RealStory, testing::ValuesIn(crashStories()),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace tavrel::scenario
