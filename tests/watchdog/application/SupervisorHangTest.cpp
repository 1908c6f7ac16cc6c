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

using SupervisorHangTest = WatchdogSupervisorTest;

TEST_F(SupervisorHangTest, ABeatIsPassedOnToTheWatchdog) {
    startPuppet();

    supervisor().beat();

    EXPECT_EQ(puppet->hear(), Message{.kind = Kind::heartbeat});
    EXPECT_EQ(puppet->hear(), std::nullopt);
}

TEST_F(SupervisorHangTest, AWatchdogThatHasLongStoppedReadingIsReplaced) {
    startPuppet();
    for (int second = 0; starts == 1 && second < 1'000'000; ++second) {
        supervisor().beat();
    }

    EXPECT_EQ(starts, 2);
    EXPECT_EQ(puppets.killed, 1);
}

TEST_F(SupervisorHangTest, WhenNothingIsUsableAHungWatchdogIsReplacedAndThisProcessSwitches) {
    urgentTimeout = 20ms;
    reported.say({{{1, false}}});
    server.switchFromOutside(1, false);
    startPuppet();

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_TRUE(isOn(1));
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
    EXPECT_EQ(puppets.killed, 1);
    EXPECT_EQ(starts, 2);
}

TEST_F(SupervisorHangTest, WhileADisplayIsUsableOrTheServerDoesNotSayAWatchdogIsGivenTime) {
    urgentTimeout = 20ms;
    answerTimeout = 1s;
    for (const ReportedDisplays::Report& report :
         {ReportedDisplays::Report{{{1, false}, {2, true}}}, ReportedDisplays::Report{}}) {
        endWithoutGoodbye();
        reported.say(report);
        startPuppet();
        const auto asked = std::chrono::steady_clock::now();

        switchOn(1);

        EXPECT_GE(std::chrono::steady_clock::now() - asked, answerTimeout);
    }
}

TEST_F(SupervisorHangTest, AWatchdogIsGivenTimeWhileTheServerIsSilentHoweverUrgentItIs) {
    urgentTimeout = 20ms;
    answerTimeout = 1s;
    reported.say({{{1, false}}});
    reported.fallSilent();
    startPuppet();
    supervisor().hurry();
    const auto asked = std::chrono::steady_clock::now();

    switchOn(1);

    EXPECT_GE(std::chrono::steady_clock::now() - asked, answerTimeout);
}

TEST_F(SupervisorHangTest, AWatchdogIsGivenTimeWhileTheServerTakesLongerThanASecondToAnswer) {
    urgentTimeout = 20ms;
    std::chrono::nanoseconds time{0};
    stopwatch = [&] { return time; };
    reported.say({{{1, false}}});
    reported.whenAsked = [&] {
        time += 1s + 1ns;
        puppet->say({.kind = Kind::answer, .id = 1});
    };
    startPuppet();

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(puppets.killed, 0);
    EXPECT_THAT(inner.changes, IsEmpty()) << "it was busy with the change";
}

TEST_F(SupervisorHangTest, AServerThatAnswersWithinASecondIsNotBusyWithTheChange) {
    urgentTimeout = 20ms;
    std::chrono::nanoseconds time{0};
    stopwatch = [&] { return time; };
    reported.say({{{1, false}}});
    reported.whenAsked = [&] { time += 1s; };
    startPuppet();

    EXPECT_EQ(switchOn(1), 0);

    EXPECT_EQ(time, 1s) << "it was asked once";
    EXPECT_EQ(puppets.killed, 1);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
}

TEST_F(SupervisorHangTest, ASwitchOffDuringWhichTheWatchdogHangsIsUndoneByTheNext) {
    urgentTimeout = 20ms;
    reported.say({{{1, false}}});
    // The next is given its time.
    reported.whenAsked = [&] { reported.say({{{1, starts > 1}}}); };
    startPuppet();

    EXPECT_EQ(switchOff(1), 1004);

    EXPECT_EQ(puppets.killed, 1);
    EXPECT_THAT(requests, ElementsAre(Pair(1, true)));
    EXPECT_THAT(inner.changes, IsEmpty());
}

TEST_F(SupervisorHangTest, WhenTheApplicationEndsAHungWatchdogIsNotWaitedFor) {
    urgentTimeout = 20ms;
    reported.say({{{1, false}, {2, true}}});
    server.switchFromOutside(1, false);
    startPuppet();

    supervisor().hurry();

    EXPECT_EQ(switchOn(1), 0);
    EXPECT_THAT(inner.changes, ElementsAre(Pair(1, true)));
    EXPECT_EQ(puppets.killed, 1);
}

}  // namespace
}  // namespace tavrel::watchdog
