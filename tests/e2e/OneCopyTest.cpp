#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <optional>

#include "tests/e2e/Session.h"
#include "tests/support/DBus.h"
#include "tests/support/FocusWishes.h"
#include "tests/watchdog/Processes.h"

/// Several starts of the application in one session.
namespace tavrel::e2e {
namespace {

using support::AppProcess;
using support::ChildProcess;
using support::waitUntil;

class OneCopyTest : public testing::Test {
protected:
    void start() {
        session.emplace(desktop, home);
        ASSERT_TRUE(session->says("Found 3 displays"));
    }

    void switchOneOff() {
        session->act("External Display 2 power");
        ASSERT_TRUE(session->says("External Display 2 is off"));
        ASSERT_EQ(desktop.monitorsOn(), 2);
    }

    /// Starts the application once more and returns how it ends.
    std::optional<ChildProcess::Ending> startAgain(const support::Environment& environment = {}) {
        const AppProcess second(desktop, home, {.program = program, .environment = environment});
        const auto ending = second.process().waitForEnd();
        EXPECT_EQ(second.standardError(), "");
        return ending;
    }

    /// Calls an action as a key of the desktop may be bound to.
    void callAction(const std::string& name) {
        support::Environment environment = support::bareEnvironment();
        environment["DBUS_SESSION_BUS_ADDRESS"] = desktop.sessionBusAddress();
        support::runToEnd({"gapplication", "action", TAVREL_APPLICATION_ID, name}, environment);
    }

    std::size_t copies() const {
        return watchdog::processesOf(program, "DISPLAY=" + desktop.displayName()).size();
    }

    std::size_t watchdogs() const {
        return watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName()).size();
    }

    const ChildProcess::Ending success{.exitStatus = 0, .signal = std::nullopt};
    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
    std::optional<Session> session;
};

TEST_F(OneCopyTest, ASecondStartBringsTheFirstToTheFrontEndsAndLeavesWhatIsOffAlone) {
    start();
    switchOneOff();
    const support::UserHome otherHome;
    const AppProcess other(desktop, otherHome, {.program = TEST_WINDOW});
    std::optional<support::AppWindow> above;
    ASSERT_TRUE(waitUntil([&] {
        above = support::AppWindow::find(desktop.displayName(), other.pid());
        return above.has_value();
    }));
    ASSERT_TRUE(above->isAbove(session->topLevel()));

    EXPECT_EQ(startAgain(), success);

    EXPECT_TRUE(waitUntil([&] { return session->topLevel().isAbove(*above); }));
    EXPECT_EQ(desktop.monitorsOn(), 2);
    EXPECT_EQ(copies(), 1U);
    EXPECT_TRUE(waitUntil([&] { return watchdogs() == 1; }));
}

TEST_F(OneCopyTest, ASecondStartClaimsTheFocusAsOfNow) {
    start();
    support::FocusWishes wishes(desktop.displayName());
    const xcb_timestamp_t lastKeyElsewhere = wishes.timeNow();

    EXPECT_EQ(startAgain(), success);

    EXPECT_TRUE(waitUntil([&] {
        return std::any_of(wishes.heard().begin(), wishes.heard().end(), [&](const auto& wish) {
            return wish.window == session->topLevel().id() && wish.time > lastKeyElsewhere;
        });
    }));
}

TEST_F(OneCopyTest, AKeyOfTheDesktopMayWakeAndRefresh) {
    start();
    switchOneOff();

    callAction("wake");
    EXPECT_TRUE(session->says("Both displays are on"));
    EXPECT_EQ(desktop.monitorsOn(), 3);

    callAction("refresh");
    EXPECT_TRUE(session->says("Found 3 displays"));
}

TEST_F(OneCopyTest, BesideACopyThatHangsOneMoreStartsAndNoThird) {
    start();
    session->application().process().signal(SIGSTOP);

    Session second(desktop, home);
    EXPECT_TRUE(second.says("Found 3 displays"));
    EXPECT_EQ(startAgain(), success);

    session->application().process().signal(SIGCONT);
}

TEST_F(OneCopyTest, WithoutASessionBusALockFileKeepsTheSecondAwayAndAKilledOneNobody) {
    const support::Environment noBus{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere"}};
    const auto opensAWindow = [&](const AppProcess& each) {
        return waitUntil([&] {
            return support::AppWindow::find(desktop.displayName(), each.pid()).has_value();
        });
    };
    std::optional<AppProcess> first(std::in_place, desktop, home,
                                    AppProcess::Options{.program = program, .environment = noBus});
    ASSERT_TRUE(opensAWindow(*first));

    EXPECT_EQ(startAgain(noBus), success);
    // For a moment there is a copy that becomes the helper.
    EXPECT_TRUE(waitUntil([&] { return copies() == 1U; }));

    first->process().signal(SIGKILL);
    first->process().waitForEnd();
    first.emplace(desktop, home, AppProcess::Options{.program = program, .environment = noBus});
    EXPECT_TRUE(opensAWindow(*first));
}

TEST_F(OneCopyTest, AStartWhileTheFirstQuitsIsAnApplicationOfItsOwn) {
    start();
    switchOneOff();
    session->application().process().signal(SIGTERM);

    Session second(desktop, home);

    EXPECT_TRUE(second.says("Found 3 displays"));
    EXPECT_EQ(desktop.monitorsOn(), 3);
    EXPECT_TRUE(session->exitsWith(0));
}

}  // namespace
}  // namespace tavrel::e2e
