#include "tests/scenario/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <utility>

#include "tests/scenario/SimulatedStage.h"
#include "tests/scenario/Steps.h"

namespace tavrel::scenario {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Optional;

std::optional<std::string> playWithTwoDisplays(std::vector<Step> steps) {
    SimulatedStage stage(2);
    return play({"Story", 2, std::move(steps)}, stage);
}

TEST(Scenario, PassesWhenItsExpectationsAreMet) {
    EXPECT_EQ(playWithTwoDisplays({userFlips(first), serverHasOff({first})}), std::nullopt);
}

TEST(Scenario, FailsWithTheExpectationThatWasNotMetAndWhatWasSeenInstead) {
    const auto failure =
        playWithTwoDisplays({userFlips(first), serverHasOff({second}), serverHasOn({first})});

    EXPECT_THAT(failure, Optional(AllOf(HasSubstr("Story, step 2 of 3, the server has 2 off"),
                                        HasSubstr("server: [off] [on ]"),
                                        HasSubstr("\"External Display is off\""))));
}

TEST(Scenario, FailsWhenTheServerIsNotAsAtFirst) {
    EXPECT_NE(playWithTwoDisplays({userFlips(first), serverHasOff({first}), serverIsAsAtFirst()}),
              std::nullopt);
}

TEST(Scenario, FailsWhenTheWindowIsNotAsExpected) {
    for (const Step& wrong : {windowShowsOff(first), windowShowsLocked(first), windowShowsOn(third),
                              windowLists({"External Display"}), windowSays("Found 2 displays")}) {
        EXPECT_NE(playWithTwoDisplays({wrong}), std::nullopt) << wrong.told;
    }
}

TEST(Scenario, PlaysTheHotKeyAndQuitting) {
    EXPECT_EQ(playWithTwoDisplays({userFlips(first), windowShowsOff(first), userPressesHotKey(),
                                   windowSays("Both displays are on"), userFlips(first),
                                   serverHasOff({first}), userQuits(), serverIsAsAtFirst()}),
              std::nullopt);
}

}  // namespace
}  // namespace tavrel::scenario
