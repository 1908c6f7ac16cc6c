#include "watchdog/application/WatchdogSupervisor.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/watchdog/application/SupervisorFixture.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using Kind = Message::Kind;

TEST_F(WatchdogSupervisorTest, TheWatchdogSwitchesAndItsStatusIsReturned) {
    EXPECT_EQ(switchOff(1), 0);
    EXPECT_EQ(switchOff(9), 1001);
    EXPECT_EQ(switchOn(1), 0);

    EXPECT_THAT(requests, ElementsAre(Pair(1, false), Pair(9, false), Pair(1, true)));
    EXPECT_THAT(inner.changes, IsEmpty());
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, TheWatchdogBringsBackWhatIsOffWhenTheApplicationIsGone) {
    switchOff(1);
    switchOff(2);

    endWithoutGoodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogSupervisorTest, AfterAGoodbyeTheWatchdogChangesNothingAndThisProcessSwitches) {
    supervisor().goodbye();

    EXPECT_TRUE(isInProcess());
    EXPECT_EQ(switchOff(1), 0);
    supervisor().goodbye();
    supervisor().beat();
    EXPECT_FALSE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false)));
    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatDiesIdleIsReplacedByOneThatKnowsWhatIsOff) {
    switchOff(1);
    switchOff(2);
    switchOn(2);

    killIdleWatchdog();

    EXPECT_EQ(starts, 2);
    EXPECT_FALSE(isOn(1)) << "the end of a watchdog is no reason to change the layout";
    server.takeChanges();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, ARunningWatchdogIsNotReplaced) {
    switchOff(1);

    supervisor().replaceIfDead();

    EXPECT_EQ(starts, 1);
}

TEST_F(WatchdogSupervisorTest, ASwitchOnDuringWhichTheWatchdogCrashesIsMadeByTheNext) {
    switchOff(1);
    for (const Outcome outcome : {Outcome::crashesBefore, Outcome::crashesAfter}) {
        now += 1min;
        outcomes = {outcome};

        EXPECT_EQ(switchOn(1), 0);

        EXPECT_TRUE(isOn(1));
    }
    EXPECT_EQ(starts, 3);
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, ASwitchOffDuringWhichTheWatchdogCrashesIsUndoneAndRefused) {
    for (const Outcome outcome : {Outcome::crashesBefore, Outcome::crashesAfter}) {
        now += 1min;
        requests.clear();
        outcomes = {outcome};

        EXPECT_EQ(switchOff(1), 1004);

        EXPECT_TRUE(isOn(1)) << "after a refusal the layout is as it was";
        EXPECT_THAT(requests, ElementsAre(Pair(1, false), Pair(1, true)));
    }
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(WatchdogSupervisorTest, AFailedSwitchOffThatCannotBeUndoneIsRemembered) {
    outcomes = {Outcome::crashesAfter, Outcome::isRefused};

    EXPECT_EQ(switchOff(1), 1004);

    EXPECT_FALSE(isOn(1));
    killIdleWatchdog();
    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, ASwitchOffThatWasRefusedIsForgotten) {
    outcomes = {Outcome::isRefused};

    EXPECT_EQ(switchOff(1), 1004);

    killIdleWatchdog();
    endWithoutGoodbye();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchdogSupervisorTest, AfterARefusalOfAnyKindADisplayThatIsOffIsRemembered) {
    for (const bool enabled : {false, true}) {
        outcomes = {Outcome::succeeds, Outcome::isRefused};
        switchOff(1);

        EXPECT_EQ(supervisor().setDisplayEnabled(1, enabled), 1004);

        killIdleWatchdog();
        endWithoutGoodbye();
        EXPECT_TRUE(isOn(1)) << enabled;
    }
}

TEST_F(WatchdogSupervisorTest, AfterThreeCrashesWithinTenSecondsThisProcessSwitches) {
    switchOff(2);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(isInProcess()) << i;
        now += 4s;
        killIdleWatchdog();
    }

    EXPECT_TRUE(isInProcess());
    EXPECT_EQ(switchOff(1), 0);
    EXPECT_EQ(switchOn(2), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false), Pair(2, true)));
    supervisor().replaceIfDead();
    supervisor().beat();
    EXPECT_EQ(starts, 3);
}

TEST_F(WatchdogSupervisorTest, ABeatThatIsNoMoreThanAMessageIsPassedOn) {
    startPuppet();

    EXPECT_TRUE(supervisor().passBeatOn());

    EXPECT_EQ(puppet->hear(), Message{.kind = Kind::heartbeat});
}

TEST_F(WatchdogSupervisorTest, ABeatIsMoreThanAMessageWhereThereIsNoWatchdog) {
    failingStarts = 1;

    EXPECT_FALSE(supervisor().passBeatOn());
}

TEST_F(WatchdogSupervisorTest, ABeatIsMoreThanAMessageWhileADisplayIsInDoubt) {
    startPuppet();
    puppet->say({.kind = Kind::answer, .id = 1, .status = serverStatus::notImplemented});
    EXPECT_EQ(switchOff(1), 1006);
    EXPECT_EQ(puppet->hear()->kind, Kind::switchOff);

    EXPECT_FALSE(supervisor().passBeatOn());
    EXPECT_EQ(puppet->hear(), std::nullopt);

    reported.say({{{1, true}}});
    supervisor().beat();
    EXPECT_EQ(puppet->hear(), Message{.kind = Kind::heartbeat});
    EXPECT_TRUE(supervisor().passBeatOn());
}

TEST_F(WatchdogSupervisorTest, MinutesAfterACrashLoopAnotherWatchdogIsStartedAndToldWhatIsOff) {
    switchOff(2);
    for (int i = 0; i < 3; ++i) {
        killIdleWatchdog();
    }
    ASSERT_TRUE(isInProcess());

    now += 5min;
    supervisor().beat();

    EXPECT_FALSE(isInProcess());
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(2));
}

TEST_F(WatchdogSupervisorTest, WatchdogsThatCrashNowAndThenAreAllReplaced) {
    supervisor();
    for (int i = 0; i < 12; ++i) {
        now += 5001ms;
        killIdleWatchdog();
        EXPECT_FALSE(isInProcess()) << i;
    }
    EXPECT_EQ(starts, 13);
}

TEST_F(WatchdogSupervisorTest, ASwitchOnThatCrashesEveryWatchdogIsMadeInThisProcess) {
    switchOff(1);
    outcomes = {Outcome::crashesBefore, Outcome::crashesBefore, Outcome::crashesBefore};

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isInProcess());
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, ASwitchOnIsAskedOfNoMoreThanThreeWatchdogsHoweverSlowlyTheyCrash) {
    switchOff(1);
    requests.clear();
    betweenStarts = 1min;
    outcomes.assign(4, Outcome::crashesBefore);

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(requests.size(), 3U);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, ASwitchOffThatCrashesEveryWatchdogIsNeverMadeInThisProcess) {
    outcomes = {Outcome::crashesAfter, Outcome::crashesBefore, Outcome::crashesBefore};

    EXPECT_EQ(switchOff(1), 1004);

    EXPECT_TRUE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, WhereNoWatchdogCanBeStartedThisProcessSwitches) {
    failingStarts = 1000;

    EXPECT_EQ(switchOff(1), 0);

    EXPECT_FALSE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, false)));
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatCannotBeStartedAtFirstIsStartedLaterAndToldWhatIsOff) {
    failingStarts = 3;
    switchOff(1);
    for (int second = 0; second < 3; ++second) {
        supervisor().beat();
        EXPECT_TRUE(isInProcess()) << "at most once a second";
        now += 10s;
        supervisor().beat();
    }

    EXPECT_EQ(starts, 4);
    EXPECT_FALSE(isInProcess());
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(WatchdogSupervisorTest, OnceAWatchdogHasRunTheNextRefusalToStartOneCountsAsTheFirst) {
    failingStarts = 3;
    supervisor();
    for (int second = 0; second < 3; ++second) {
        now += 10s;
        supervisor().beat();
    }
    ASSERT_FALSE(isInProcess());
    failingStarts = 5;
    killIdleWatchdog();
    ASSERT_TRUE(isInProcess());

    now += 1s;
    supervisor().beat();

    EXPECT_FALSE(isInProcess());
}

TEST_F(WatchdogSupervisorTest, AnAnswerThatIsRepeatedDoesNotAnswerTheNextRequest) {
    const Message answer{.kind = Kind::answer, .id = 1};
    puppetSays = {{.kind = Kind::ready}, answer, answer};
    EXPECT_EQ(switchOn(1), 0);
    ASSERT_EQ(starts, 1);

    EXPECT_EQ(switchOn(2), 0);

    EXPECT_EQ(starts, 2);
    EXPECT_THAT(requests, ElementsAre(Pair(2, true)));
}

TEST_F(WatchdogSupervisorTest, AnAnswerToAnotherRequestIsNoAnswer) {
    puppetSays = {{.kind = Kind::ready}, {.kind = Kind::answer, .id = 77, .status = 0}};
    supervisor();

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(puppets.killed, 1);
    EXPECT_EQ(starts, 2);
    EXPECT_THAT(requests, ElementsAre(Pair(1, true)));
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatDoesNotAnswerInTimeIsReplaced) {
    puppetSays = {{.kind = Kind::ready}};
    answerTimeout = 20ms;

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(puppets.killed, 1) << "or it might still switch one day";
    EXPECT_EQ(starts, 2);
}

TEST_F(WatchdogSupervisorTest, AWatchdogThatSpeaksUnaskedIsReplaced) {
    for (const Message& message : {Message{.kind = Kind::answer, .id = 1},
                                   Message{.kind = Kind::goodbye}, Message{.kind = Kind::ready}}) {
        SCOPED_TRACE(static_cast<int>(message.kind));
        const int startsBefore = starts;
        endWithoutGoodbye();
        puppetSays = {{.kind = Kind::ready}, message};

        supervisor().replaceIfDead();

        EXPECT_EQ(starts, startsBefore + 2);
    }
    EXPECT_EQ(puppets.killed, 3);
}

TEST_F(WatchdogSupervisorTest, AWatchdogMaySayOnceThatItIsReady) {
    puppetSays = {{.kind = Kind::ready}};
    supervisor().replaceIfDead();
    EXPECT_EQ(starts, 1);

    puppet->say({.kind = Kind::ready});
    supervisor().replaceIfDead();

    EXPECT_EQ(starts, 2);
}

}  // namespace
}  // namespace tavrel::watchdog
