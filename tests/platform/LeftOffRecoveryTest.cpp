#include "platform/LeftOffRecovery.h"

#include <gmock/gmock.h>

#include "platform/LidAwareDisplays.h"
#include "tests/simulated/SimulatedLid.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class LeftOffRecoveryTest : public testing::Test {
protected:
    static constexpr DisplayID panel = 5;
    static constexpr DisplayID first = 1;
    static constexpr DisplayID second = 2;
    static constexpr DisplayID third = 3;

    LeftOffRecoveryTest() {
        server.connect({.id = panel, .builtIn = true});
        for (const DisplayID each : {first, second, third}) {
            server.connect({.id = each});
        }
    }

    /// What is off when the application starts, whoever has switched it off.
    void beginWithOff(const std::vector<DisplayID>& displays) {
        for (const DisplayID each : displays) {
            server.switchFromOutside(each, false);
        }
    }

    SimulatedWindowServer server;
    SimulatedLid lid;
    LidAwareQueries queries{server, lid};
    std::vector<DisplayID> leftOff;
    LeftOffRecovery recovery{server, queries, [this] { return leftOff; }};
};

TEST_F(LeftOffRecoveryTest, WhatWasLeftOffIsListedAsOnLatestFirst) {
    beginWithOff({first, third});
    leftOff = {first, third};

    const auto listed = recovery.nowAfterProbing();

    EXPECT_TRUE(listed->isActive(first));
    EXPECT_TRUE(listed->isActive(third));
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(third, true), Pair(first, true)));
}

TEST_F(LeftOffRecoveryTest, WhatAnotherProgramSwitchedOffStaysOff) {
    beginWithOff({first, second});
    leftOff = {first};

    const auto listed = recovery.nowAfterProbing();

    EXPECT_TRUE(listed->isActive(first));
    EXPECT_FALSE(listed->isActive(second));
}

TEST_F(LeftOffRecoveryTest, WhatGoesOffLaterStaysOff) {
    recovery.nowAfterProbing();
    beginWithOff({first});
    leftOff = {first};

    EXPECT_FALSE(recovery.nowAfterProbing()->isActive(first));
}

TEST_F(LeftOffRecoveryTest, ALookInPassingSwitchesNothingOn) {
    beginWithOff({first});
    leftOff = {first};

    EXPECT_FALSE(recovery.now()->isActive(first));
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(LeftOffRecoveryTest, WhatIsNotThereIsLeftAlone) {
    server.disconnect(first);
    lid.close();
    beginWithOff({panel});
    leftOff = {first, panel};

    recovery.nowAfterProbing();

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(LeftOffRecoveryTest, WhatAnotherProgramSwitchedOnIsAskedForSoThatItIsForgotten) {
    leftOff = {first};

    recovery.nowAfterProbing();

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(first, true)));
}

TEST_F(LeftOffRecoveryTest, AServerThatCannotSayWhatThereIsIsAskedAgain) {
    beginWithOff({first});
    leftOff = {first};
    server.setHasOnlineList(false);
    recovery.nowAfterProbing();
    ASSERT_THAT(server.takeChanges(), IsEmpty());

    server.setHasOnlineList(true);
    recovery.nowAfterProbing();

    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(first, true)));
}

TEST_F(LeftOffRecoveryTest, WhatGoesOffBeforeItIsAskedAgainStaysOff) {
    beginWithOff({first});
    leftOff = {first};
    server.setHasOnlineList(false);
    recovery.nowAfterProbing();

    server.setHasOnlineList(true);
    beginWithOff({second});
    leftOff = {first, second};
    const auto listed = recovery.nowAfterProbing();

    EXPECT_TRUE(listed->isActive(first));
    EXPECT_FALSE(listed->isActive(second));
}

}  // namespace
}  // namespace tavrel
