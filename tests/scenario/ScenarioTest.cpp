#include "tests/scenario/Scenario.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/scenario/SimulatedStage.h"
#include "tests/scenario/Steps.h"

namespace tavrel::scenario {
namespace {

using ::testing::HasSubstr;

TEST(Scenario, ThatComesTrueReportsNothing) {
    SimulatedStage stage(2);
    EXPECT_EQ(play({"Good", 2, {userFlips(first), serverHasOff({first})}}, stage), std::nullopt);
}

TEST(Scenario, TellsWhichExpectationNeverHeldAndWhatWasSeenInstead) {
    SimulatedStage stage(2);
    const auto failure =
        play({"Bad", 2, {userFlips(first), serverHasOff({second}), serverHasOn({first})}}, stage);
    ASSERT_TRUE(failure);
    EXPECT_THAT(*failure, HasSubstr("Bad, step 2 of 3, the server has 2 off"));
    EXPECT_THAT(*failure, HasSubstr("server: [off] [on ]"));
    EXPECT_THAT(*failure, HasSubstr("\"External Display is off\""));
}

TEST(Scenario, FailsWhenItsServerIsNotAsAtFirst) {
    SimulatedStage stage(2);
    EXPECT_TRUE(
        play({"Moved", 2, {userFlips(first), serverHasOff({first}), serverIsAsAtFirst()}}, stage));
}

TEST(Scenario, FailsWhenARowIsNotAsTold) {
    for (const Step& wrong : {windowShowsOff(first), windowShowsLocked(first), windowShowsOn(third),
                              windowLists({"External Display"}), windowSays("Found 2 displays")}) {
        SimulatedStage stage(2);
        EXPECT_TRUE(play({"Wrong", 2, {wrong}}, stage)) << wrong.told;
    }
}

TEST(Scenario, PlaysQuittingAndTheHotKey) {
    SimulatedStage stage(2);
    EXPECT_EQ(play({"HotKey",
                    2,
                    {userFlips(first), windowShowsOff(first), userPressesHotKey(),
                     windowSays("Both displays are on"), userFlips(first), serverHasOff({first}),
                     userQuits(), serverIsAsAtFirst()}},
                   stage),
              std::nullopt);
}

}  // namespace
}  // namespace tavrel::scenario
