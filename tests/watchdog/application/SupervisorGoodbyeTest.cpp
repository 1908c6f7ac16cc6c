#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/watchdog/application/SupervisorFixture.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Pair;
using Kind = Message::Kind;

using SupervisorGoodbyeTest = WatchdogSupervisorTest;

TEST(SupervisorSetupTest, PausesForAsLongAsItIsTold) {
    const auto begin = std::chrono::steady_clock::now();

    SupervisorSetup().pause(20ms);

    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20ms);
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWhatIsOffIsSwitchedOnAndTheWatchdogDismissed) {
    switchOff(1);
    switchOff(2);

    supervisor().goodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
    EXPECT_THAT(requests,
                ElementsAre(Pair(1, false), Pair(2, false), Pair(2, true), Pair(1, true)));
    EXPECT_TRUE(isInProcess());
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeAWatchdogWithNothingLeftToDoIsDismissed) {
    startPuppet();

    supervisor().goodbye();

    EXPECT_EQ(puppets.dismissed, 1);
    EXPECT_TRUE(isInProcess());
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWhatIsRefusedIsTriedAgain) {
    switchOff(1);
    outcomes = {Outcome::isRefused, Outcome::isRefused, Outcome::isRefused};

    supervisor().goodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_EQ(paused, 3 * insistenceInterval);
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWhatWasRefusedBeforeIsTriedAgainWhoeverSwitchedItOff) {
    server.switchFromOutside(3, false);
    outcomes = {Outcome::isRefused};
    EXPECT_EQ(switchOn(3), 1004);

    supervisor().goodbye();

    EXPECT_TRUE(isOn(3));
    EXPECT_EQ(paused, 0ms);
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWithoutAWatchdogThisProcessTriesAgain) {
    failingStarts = 1000;
    switchOff(1);
    inner.refusals = 8;

    supervisor().goodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_EQ(paused, 8 * insistenceInterval);
}

TEST_F(SupervisorGoodbyeTest, WhatIsStillOffAfterAGoodbyeIsSwitchedOnByTheWatchdog) {
    switchOff(1);
    // As often as the supervisor tries; then the watchdog itself does.
    outcomes.assign(insistentAttempts, Outcome::isRefused);

    supervisor().goodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_EQ(requests.size(), 1 + insistentAttempts + 1U);
    EXPECT_TRUE(isInProcess());
}

TEST_F(SupervisorGoodbyeTest, SoIsWhatWasSwitchedOffByAnotherProgramAndRefused) {
    server.switchFromOutside(3, false);
    outcomes.assign(1 + insistentAttempts, Outcome::isRefused);
    EXPECT_EQ(switchOn(3), 1004);

    supervisor().goodbye();

    EXPECT_TRUE(isOn(3));
}

TEST_F(SupervisorGoodbyeTest, AWatchdogIsNeverDismissedWhileSomethingIsOff) {
    puppetSays = {{.kind = Kind::ready}, {.kind = Kind::answer, .id = 1}};
    for (std::uint32_t attempt = 1; attempt <= insistentAttempts; ++attempt) {
        puppetSays->push_back(
            {.kind = Kind::answer, .id = 1 + attempt, .status = serverStatus::cannotComplete});
    }
    EXPECT_EQ(switchOff(1), 0);

    supervisor().goodbye();

    EXPECT_EQ(puppets.dismissed, 0) << "it would be given too little time";
    EXPECT_EQ(starts, 1);
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeNobodyWaitsForADisplayThatWasUnplugged) {
    switchOff(1);
    server.disconnect(1);

    supervisor().goodbye();

    EXPECT_EQ(paused, 0ms);
}

TEST_F(SupervisorGoodbyeTest, AWatchdogThatFindsADisplayUnpluggedIsDismissed) {
    puppetSays = {{.kind = Kind::ready},
                  {.kind = Kind::answer, .id = 1},
                  {.kind = Kind::answer, .id = 2, .status = serverStatus::illegalArgument}};
    EXPECT_EQ(switchOff(1), 0);

    supervisor().goodbye();

    EXPECT_EQ(puppets.dismissed, 1);
    EXPECT_EQ(starts, 1);
}

TEST_F(SupervisorGoodbyeTest, WhatIsHandedOverIsToldToTheWatchdogAndToEachThatTakesItsPlace) {
    startPuppet();

    supervisor().handOver({2, 3});
    EXPECT_EQ(puppet->hear(), (Message{.kind = Kind::handOver, .display = 2}));
    EXPECT_EQ(puppet->hear(), (Message{.kind = Kind::handOver, .display = 3}));
    EXPECT_TRUE(supervisor().isHandedOver());

    puppet->say({.kind = Kind::answer, .id = 9});
    puppetSays = {{.kind = Kind::ready}};
    supervisor().replaceIfDead();
    EXPECT_EQ(starts, 2);
    EXPECT_EQ(puppet->hear(), (Message{.kind = Kind::handOver, .display = 2}));
    EXPECT_EQ(puppet->hear(), (Message{.kind = Kind::handOver, .display = 3}));
    EXPECT_TRUE(supervisor().isHandedOver());
}

TEST_F(SupervisorGoodbyeTest, WithoutAWatchdogNothingIsHandedOver) {
    failingStarts = 1000;

    supervisor().handOver({1});

    EXPECT_FALSE(supervisor().isHandedOver());
}

TEST_F(SupervisorGoodbyeTest, WhatIsHandedOverComesOnWhenTheApplicationIsGone) {
    server.switchFromOutside(3, false);

    supervisor().handOver({3});
    EXPECT_FALSE(isOn(3));
    endWithoutGoodbye();

    EXPECT_TRUE(isOn(3));
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWhatIsHandedOverIsSwitchedOnOnce) {
    server.switchFromOutside(3, false);
    supervisor().handOver({3});

    supervisor().goodbye();

    EXPECT_TRUE(isOn(3));
    EXPECT_THAT(requests, ElementsAre(Pair(3, true)));
}

TEST_F(SupervisorGoodbyeTest, AtAGoodbyeWithoutAWatchdogThisProcessSwitchesOnWhatIsHandedOver) {
    failingStarts = 1000;
    server.switchFromOutside(3, false);
    supervisor().handOver({3});

    supervisor().goodbye();

    EXPECT_TRUE(isOn(3));
}

TEST_F(SupervisorGoodbyeTest, WhatWasRefusedAndSwitchedOnSinceIsLeftAlone) {
    server.switchFromOutside(3, false);
    outcomes = {Outcome::isRefused};
    EXPECT_EQ(switchOn(3), 1004);
    EXPECT_EQ(switchOn(3), 0);

    supervisor().goodbye();

    EXPECT_THAT(requests, ElementsAre(Pair(3, true), Pair(3, true)));
}

TEST_F(SupervisorGoodbyeTest, WhatWasHandedOverAndSwitchedOnSinceIsLeftAlone) {
    server.switchFromOutside(3, false);
    supervisor().handOver({3, 9});
    EXPECT_EQ(switchOn(3), 0);
    EXPECT_EQ(switchOn(9), 1001);

    supervisor().goodbye();

    EXPECT_THAT(requests, ElementsAre(Pair(3, true), Pair(9, true)));
    EXPECT_EQ(paused, 0ms);
}

TEST_F(SupervisorGoodbyeTest, EachChangeThatEndsIsCounted) {
    switchOff(1);
    EXPECT_EQ(supervisor().changesEnded(), 1U);

    outcomes = {Outcome::isRefused, Outcome::isRefused};
    supervisor().goodbye();

    EXPECT_EQ(supervisor().changesEnded(), 4U) << "refused twice, then accepted";
}

TEST_F(SupervisorGoodbyeTest, AfterATimeoutAtTheServerADisplayCountsAsOff) {
    failingStarts = 1;
    inner.refusals = 1;
    inner.refusal = serverStatus::notImplemented;
    EXPECT_EQ(switchOff(1), 1006);

    now += 1s;
    supervisor().beat();

    server.switchFromOutside(1, false);
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1)) << "the next watchdog was told of it";
}

TEST_F(SupervisorGoodbyeTest, AfterATimeoutALookThatFindsTheDisplayOnSettlesIt) {
    inner.refusals = 1;
    inner.refusal = serverStatus::notImplemented;
    failingStarts = 1;
    EXPECT_EQ(switchOff(1), 1006);
    reported.say({{{1, true}}});
    supervisor().beat();

    now += 1s;
    startPuppet();
    supervisor().beat();

    EXPECT_EQ(puppet->hear(), Message{.kind = Kind::heartbeat}) << "it is told of nothing";
}

}  // namespace
}  // namespace tavrel::watchdog
