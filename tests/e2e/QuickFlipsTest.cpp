#include <gtest/gtest.h>

#include <csignal>

#include "tests/e2e/WatchdogSession.h"
#include "tests/support/SwitchCount.h"

/// Several switches are flipped before the first has been carried out. The one that would
/// leave nothing on must be refused, not undone.
namespace tavrel::e2e {
namespace {

using support::SwitchCount;
using support::waitUntil;

constexpr const char* refusal =
    "The desktop couldn’t change the desktop display layout (error 1004)";

/// The application, whose watchdogs are late until they are let go.
class QuickFlipsTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run.isUp); }

    void hold(pid_t watchdog) {
        ASSERT_NE(watchdog, 0);
        ASSERT_EQ(::kill(watchdog, SIGSTOP), 0);
        held.push_back(watchdog);
    }

    void letGo() {
        for (const pid_t each : held) {
            ::kill(each, SIGCONT);
        }
    }

    static bool turnsOff(const Session& session, int row) {
        const std::string name = WatchdogSession::nameOf(row);
        return session.act(name + " power") && session.says("Turning off " + name + "…");
    }

    /// Whether in the end exactly one is on, and none had to be switched on for that. If the
    /// server's word of one that was got lost, there is one more that was switched off.
    testing::AssertionResult isOneLeftAllTheTime(SwitchCount& count) const {
        const bool oneIsLeft = waitUntil([&] { return run.desktop.monitorsOn() == 1; });
        const int on = count.switchedOn();
        const int off = count.switchedOff();
        return oneIsLeft && on == 0 && off == 2
                   ? testing::AssertionSuccess()
                   : testing::AssertionFailure()
                         << run.desktop.monitorsOn() << " are on, after " << on
                         << " have been switched on and " << off << " off";
    }

    WatchdogSession run;
    std::vector<pid_t> held;
};

TEST_F(QuickFlipsTest, OfAllDisplaysBeforeTheWatchdogHasDoneOneLeaveOneOn) {
    SwitchCount count(run.desktop.displayName());
    hold(run.watchdog());
    for (const int row : {1, 2, 3}) {
        ASSERT_TRUE(turnsOff(*run.session, row));
    }
    ASSERT_EQ(run.desktop.monitorsOn(), 3);

    letGo();

    EXPECT_TRUE(run.session->says(refusal));
    EXPECT_TRUE(isOneLeftAllTheTime(count));
}

TEST_F(QuickFlipsTest, InTwoApplicationsLeaveOneOn) {
    const support::UserHome secondHome;
    const pid_t firstWatchdog = run.watchdog();
    const support::OtherSession otherSession(run.desktop.displayName());
    Session second(run.desktop, secondHome, otherSession);
    ASSERT_TRUE(second.says("Found 3 displays"));
    SwitchCount count(run.desktop.displayName());
    std::vector<pid_t> watchdogs;
    ASSERT_TRUE(waitUntil([&] { return (watchdogs = run.watchdogs()).size() == 2; }));
    ASSERT_NE(firstWatchdog, 0);
    for (const pid_t each : watchdogs) {
        hold(each);
    }
    ASSERT_TRUE(turnsOff(*run.session, 1));
    ASSERT_TRUE(turnsOff(*run.session, 2));
    ASSERT_TRUE(turnsOff(second, 2));
    ASSERT_TRUE(turnsOff(second, 3));

    letGo();

    EXPECT_TRUE(waitUntil([&] {
        return run.session->window().footer == refusal || second.window().footer == refusal;
    }));
    EXPECT_TRUE(isOneLeftAllTheTime(count));
}

TEST_F(QuickFlipsTest, AndAnotherProgramLeaveOneOn) {
    SwitchCount count(run.desktop.displayName());
    hold(run.watchdog());
    ASSERT_TRUE(turnsOff(*run.session, 1));
    ASSERT_TRUE(turnsOff(*run.session, 3));
    run.desktop.otherClient().switchOff("DUMMY1");

    letGo();

    EXPECT_TRUE(run.session->says(refusal));
    EXPECT_TRUE(isOneLeftAllTheTime(count));
}

}  // namespace
}  // namespace tavrel::e2e
