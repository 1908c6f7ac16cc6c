#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <optional>

#include "tests/e2e/Session.h"
#include "tests/support/Keyboard.h"
#include "tests/support/SessionManager.h"
#include "tests/watchdog/Processes.h"

namespace tavrel::e2e {
namespace {

using support::ChildProcess;
using support::Monitor;
using support::waitUntil;
namespace key = support::key;

std::vector<pid_t> guardsAt(const support::VirtualDesktop& desktop) {
    return watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName());
}

/// While it exists no switch of the application's gets any further.
class SlowSwitching {
public:
    explicit SlowSwitching(const support::VirtualDesktop& desktop) : guards_(guardsAt(desktop)) {
        EXPECT_EQ(guards_.size(), 1U);
        tell(SIGSTOP);
    }
    ~SlowSwitching() { tell(SIGCONT); }
    SlowSwitching(const SlowSwitching&) = delete;
    SlowSwitching& operator=(const SlowSwitching&) = delete;

private:
    void tell(int number) const {
        for (const pid_t guard : guards_) {
            kill(guard, number);
        }
    }

    std::vector<pid_t> guards_;
};

class QuitTest : public testing::Test {
protected:
    QuitTest() { EXPECT_TRUE(session.says("Found 3 displays")); }

    void switchOff(const char* name) { session.act(std::string(name) + " power"); }

    void expectAllAsBeforeAfter(const std::function<void()>& quit) {
        const std::vector<Monitor> before = desktop.monitors();
        switchOff("External Display 2");
        ASSERT_TRUE(session.says("External Display 2 is off"));
        ASSERT_NE(desktop.monitors(), before);
        quit();
        EXPECT_EQ(session.application().process().waitForEnd(),
                  (ChildProcess::Ending{0, std::nullopt}));
        EXPECT_EQ(desktop.monitors(), before);
        EXPECT_TRUE(
            waitUntil([&] { return session.application().process().livingGroup().empty(); }));
        EXPECT_TRUE(waitUntil([&] { return guardsAt(desktop).empty(); }));
        EXPECT_EQ(session.application().standardError(), "");
    }

    void expectSignalQuits(int number) {
        expectAllAsBeforeAfter([&] { session.application().process().signal(number); });
    }

    support::SessionManager sessionManager;
    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    Session session{desktop, home, {{"SESSION_MANAGER", sessionManager.address()}}};
};

TEST_F(QuitTest, TheMenuSwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] { session.act("Quit"); });
}

TEST_F(QuitTest, TheMenusKeySwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] {
        session.topLevel().focus();
        support::Keyboard(desktop.displayName()).chord({key::control, 'q'});
    });
}

TEST_F(QuitTest, ClosingTheWindowSwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] { session.topLevel().close(); });
}

TEST_F(QuitTest, TheTerminateSignalSwitchesEverythingOn) {
    expectSignalQuits(SIGTERM);
}
TEST_F(QuitTest, TheInterruptSignalSwitchesEverythingOn) {
    expectSignalQuits(SIGINT);
}
TEST_F(QuitTest, TheHangUpSignalSwitchesEverythingOn) {
    expectSignalQuits(SIGHUP);
}

TEST_F(QuitTest, LoggingOutSwitchesEverythingOn) {
    ASSERT_TRUE(waitUntil([&] { return sessionManager.hasClient(); }));
    expectAllAsBeforeAfter([&] { sessionManager.logOut(); });
}

TEST_F(QuitTest, ASwitchStillInFlightCannotOutliveIt) {
    const std::vector<Monitor> before = desktop.monitors();
    std::optional<SlowSwitching> slow(std::in_place, desktop);
    switchOff("External Display 2");
    ASSERT_TRUE(session.says("Turning off External Display 2…"));
    session.application().process().signal(SIGTERM);
    EXPECT_EQ(session.application().process().waitForEnd(std::chrono::milliseconds(500)),
              std::nullopt);
    slow.reset();
    EXPECT_EQ(session.application().process().waitForEnd(),
              (ChildProcess::Ending{0, std::nullopt}));
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(QuitTest, RightAfterAClickOnOffLeavesThatDisplayOn) {
    const std::vector<Monitor> before = desktop.monitors();
    switchOff("External Display 3");
    session.application().process().signal(SIGTERM);
    EXPECT_EQ(session.application().process().waitForEnd(),
              (ChildProcess::Ending{0, std::nullopt}));
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(QuitTest, ASwitchThatNeverEndsHoldsItUpForAWhileOnly) {
    const std::vector<Monitor> before = desktop.monitors();
    {
        const SlowSwitching endless(desktop);
        switchOff("External Display 2");
        ASSERT_TRUE(session.says("Turning off External Display 2…"));
        session.application().process().signal(SIGTERM);
        EXPECT_EQ(session.application().process().waitForEnd(),
                  (ChildProcess::Ending{1, std::nullopt}));
    }
    // Whatever becomes of what was still under way, the display is on in the end.
    EXPECT_TRUE(
        waitUntil([&] { return guardsAt(desktop).empty() && desktop.monitors() == before; }));
}

}  // namespace
}  // namespace tavrel::e2e
