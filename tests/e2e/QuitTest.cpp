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

using support::Monitor;
using support::waitUntil;
namespace key = support::key;

std::vector<pid_t> watchdogsAt(const support::VirtualDesktop& desktop) {
    return watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName());
}

/// Stops the watchdog while it exists, so that no switch of the application gets any further.
class HeldSwitching {
public:
    explicit HeldSwitching(const support::VirtualDesktop& desktop) {
        EXPECT_TRUE(waitUntil([&] { return (watchdogs_ = watchdogsAt(desktop)).size() == 1; }));
        tell(SIGSTOP);
    }
    ~HeldSwitching() { tell(SIGCONT); }
    HeldSwitching(const HeldSwitching&) = delete;
    HeldSwitching& operator=(const HeldSwitching&) = delete;

private:
    void tell(int number) const {
        for (const pid_t each : watchdogs_) {
            kill(each, number);
        }
    }

    std::vector<pid_t> watchdogs_;
};

class QuitTest : public testing::Test {
protected:
    QuitTest() { EXPECT_TRUE(session.says("Found 3 displays")); }

    void switchOff(const char* name) { session.act(std::string(name) + " power"); }

    void expectAllAsBeforeAfter(const std::function<void()>& quit) {
        const std::vector<Monitor> before = desktop.monitors();
        switchOff("External Display 2");
        ASSERT_TRUE(session.says("External Display 2 is off"));
        ASSERT_NE(desktop.monitors(), before)
            << (session.application().process().isRunning() ? "it runs, " : "it has ended, ")
            << session.window() << session.application().standardError();

        quit();

        EXPECT_TRUE(session.exitsWith(0));
        EXPECT_EQ(desktop.monitors(), before);
        EXPECT_TRUE(
            waitUntil([&] { return session.application().process().livingGroup().empty(); }));
        EXPECT_TRUE(waitUntil([&] { return watchdogsAt(desktop).empty(); }));
        EXPECT_EQ(session.application().standardError(), "");
    }

    void expectAllAsBeforeAfterSignal(int number) {
        expectAllAsBeforeAfter([&] { session.application().process().signal(number); });
    }

    support::SessionManager sessionManager;
    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    Session session{desktop, home, {{"SESSION_MANAGER", sessionManager.address()}}};
};

TEST_F(QuitTest, QuittingByTheMenuSwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] { session.act("Quit"); });
}

TEST_F(QuitTest, QuittingByTheKeyboardSwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] {
        session.topLevel().focus();
        support::Keyboard(desktop.displayName()).chord({key::control, 'q'});
    });
}

TEST_F(QuitTest, ClosingTheWindowSwitchesEverythingOn) {
    expectAllAsBeforeAfter([&] { session.topLevel().close(); });
}

TEST_F(QuitTest, TheTerminateSignalSwitchesEverythingOn) {
    expectAllAsBeforeAfterSignal(SIGTERM);
}

TEST_F(QuitTest, TheInterruptSignalSwitchesEverythingOn) {
    expectAllAsBeforeAfterSignal(SIGINT);
}

TEST_F(QuitTest, TheHangUpSignalSwitchesEverythingOn) {
    expectAllAsBeforeAfterSignal(SIGHUP);
}

TEST_F(QuitTest, LoggingOutSwitchesEverythingOn) {
    ASSERT_TRUE(waitUntil([&] { return sessionManager.hasClient(); }));
    expectAllAsBeforeAfter([&] { sessionManager.logOut(); });
}

TEST_F(QuitTest, QuittingWaitsForASwitchInFlightAndUndoesIt) {
    const std::vector<Monitor> before = desktop.monitors();
    std::optional<HeldSwitching> held(std::in_place, desktop);
    switchOff("External Display 2");
    ASSERT_TRUE(session.says("Turning off External Display 2…"));
    session.application().process().signal(SIGTERM);
    EXPECT_EQ(session.application().process().waitForEnd(std::chrono::milliseconds(500)),
              std::nullopt);

    held.reset();

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(QuitTest, QuittingRightAfterAClickOnOffLeavesThatDisplayOn) {
    const std::vector<Monitor> before = desktop.monitors();
    switchOff("External Display 3");

    session.application().process().signal(SIGTERM);

    EXPECT_TRUE(session.exitsWith(0));
    EXPECT_EQ(desktop.monitors(), before);
}

}  // namespace
}  // namespace tavrel::e2e
