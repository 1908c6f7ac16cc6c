#include <gtest/gtest.h>

#include <ostream>

#include "tests/platform/macos/MacStage.h"
#include "tests/scenario/Scenario.h"
#include "tests/scenario/Steps.h"
#include "tests/scenario/Stories.h"

namespace tavrel::scenario {

static void PrintTo(const Scenario& scenario, std::ostream* out) {
    *out << scenario.name;
}

namespace {

std::string nameOfStory(const testing::TestParamInfo<Scenario>& each) {
    return each.param.name;
}

void expectToComeTrue(const Scenario& scenario, const simulatedMac::Display& display = {}) {
    MacStage stage(scenario.displays, display);
    EXPECT_EQ(play(scenario, stage), std::nullopt);
}

class MacStory : public testing::TestWithParam<Scenario> {};

TEST_P(MacStory, ComesTrue) {
    expectToComeTrue(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Switching, MacStory, testing::ValuesIn(switchingStories()), nameOfStory);
INSTANTIATE_TEST_SUITE_P(Recovery, MacStory, testing::ValuesIn(recoveryStories()), nameOfStory);
INSTANTIATE_TEST_SUITE_P(Start, MacStory, testing::ValuesIn(listingStartStories()), nameOfStory);
INSTANTIATE_TEST_SUITE_P(Crash, MacStory, testing::ValuesIn(crashStories()), nameOfStory);

/// A display that is off is in none of the server's lists, so that only what the application
/// remembers brings it back.
class MacForgetfulStory : public testing::TestWithParam<Scenario> {};

TEST_P(MacForgetfulStory, ComesTrue) {
    expectToComeTrue(GetParam(), {.whenOff = simulatedMac::Display::WhenOff::vanishes});
}

INSTANTIATE_TEST_SUITE_P(
    Switching, MacForgetfulStory,
    testing::Values(
        Scenario{
            "OneThatIsOffIsStillListedAfterARefreshAndARestart",
            2,
            {userFlips(first), windowShowsOff(first), windowShowsLocked(second),
             userPressesRefresh(), windowLists({"External Display", "External Display"}),
             windowSays("Both displays are ready"), windowShowsOff(first), applicationIsKilled(),
             serverHasOff({first}), applicationStarts(), windowShowsOff(first),
             windowShowsLocked(second), userFlips(first), windowSays("External Display is on"),
             windowShowsOn(second), serverIsAsAtFirst()}},
        Scenario{"WakeBringsBackWhatNoListHas",
                 3,
                 {userFlips(first), windowShowsOff(first), userFlips(second),
                  windowShowsOff(second), userPressesRefresh(), windowSays("Found 3 displays"),
                  userPressesWake(), windowSays("Both displays are on"), serverIsAsAtFirst()}},
        Scenario{"AllThatWentOffElsewhereComeBackByThemselves",
                 3,
                 {windowSays("Found 3 displays"), otherProgramSwitchesOff({first, second, third}),
                  windowSays("Lost display recovered automatically"), serverIsAsAtFirst()}},
        Scenario{"ACrashBringsBackWhatNoListHas",
                 2,
                 {userFlips(second), windowShowsOff(second), applicationCrashes(),
                  serverIsAsAtFirst()}}),
    nameOfStory);

}  // namespace
}  // namespace tavrel::scenario
