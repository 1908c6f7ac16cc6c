#include <gtest/gtest.h>

#include <ostream>

#include "tests/scenario/SimulatedStage.h"
#include "tests/scenario/Stories.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

class SimulatedStory : public testing::TestWithParam<Scenario> {};

TEST_P(SimulatedStory, ComesTrue) {
    for (std::uint64_t seed = 1; seed <= 20; ++seed) {
        SimulatedStage stage(GetParam().displays, seed);
        const auto failure = play(GetParam(), stage);
        EXPECT_FALSE(failure) << *failure << "\n  seed: " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Switching, SimulatedStory, testing::ValuesIn(switchingStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Start, SimulatedStory, testing::ValuesIn(listingStartStories()),
                         [](const auto& each) { return each.param.name; });
INSTANTIATE_TEST_SUITE_P(Recovery, SimulatedStory, testing::ValuesIn(recoveryStories()),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace tavrel::scenario
