#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <set>
#include <string>

#include "tests/scenario/PlasmaStage.h"
#include "tests/scenario/Stories.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

/// What cannot happen there.
bool isPossible(const Scenario& story) {
    const std::set<std::string> impossible{
        // No program can take keys from all others.
        "TheHotKeyWakesAll",
        // The compositor refuses any program that wants to switch off all displays.
        "AllSwitchedOffElsewhereComeBackByThemselves",
        "TheLastOneSwitchedOffElsewhereBringsAllBack",
    };
    return !impossible.contains(story.name);
}

std::vector<Scenario> stories() {
    std::vector<Scenario> all;
    for (const auto* list :
         {&switchingStories(), &recoveringStartStories(), &recoveryStories(), &crashStories()}) {
        std::copy_if(list->begin(), list->end(), std::back_inserter(all), isPossible);
    }
    return all;
}

class PlasmaStoryTest : public testing::TestWithParam<Scenario> {};

TEST_P(PlasmaStoryTest, ComesTrue) {
    if (!support::PlasmaDesktop::isInstalled()) {
        GTEST_SKIP() << "Plasma's compositor, kwin_wayland, is not installed";
    }
    PlasmaStage stage(GetParam().displays, TAVREL_PROGRAM);

    const auto failure = play(GetParam(), stage);

    EXPECT_FALSE(failure) << *failure;
}

INSTANTIATE_TEST_SUITE_P(Each, PlasmaStoryTest, testing::ValuesIn(stories()),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace tavrel::scenario
