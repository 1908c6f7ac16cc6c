#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/Session.h"
#include "tests/support/LidService.h"
#include "tests/support/MessageBus.h"
#include "tests/support/SilentSocket.h"
#include "tests/support/SwitchCount.h"
#include "tests/watchdog/Processes.h"

namespace tavrel::e2e {
namespace {

using support::LidService;
using support::waitUntil;

/// A laptop: DUMMY0 is its panel.
class LidTest : public testing::Test {
protected:
    explicit LidTest(int monitors = 2) : desktop({.monitors = monitors, .accessibility = true}) {}

    void startBus() { bus.emplace(home.path(), "system", home.janitor()); }

    void start() {
        const char* options = std::getenv("ASAN_OPTIONS");
        const std::string inherited = options != nullptr ? std::string(options) + ":" : "";
        session.emplace(
            desktop, home,
            support::Environment{
                {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + (home.path() / "system").string()},
                {"LD_PRELOAD", LAPTOP_PANEL},
                // Else it insists on being loaded first itself.
                {"ASAN_OPTIONS", inherited + "verify_asan_link_order=0"}});
        ASSERT_EQ(session->element("Wake both displays").role, "push button");
        ASSERT_EQ(session->element("Built-in Display power").role, "check box");
    }

    bool isChecked(const std::string& control) const {
        return session->element(control).isChecked();
    }

    support::VirtualDesktop desktop;
    support::UserHome home;
    std::optional<support::MessageBus> bus;
    std::optional<Session> session;
};

TEST_F(LidTest, ClosingTheLidBringsBackTheScreenThatWasOffAndKeepsItOn) {
    startBus();
    LidService service(bus->address(), LidService::Kind::upower, false);
    start();
    session->act("External Display power");
    ASSERT_TRUE(session->says("External Display is off"));
    ASSERT_FALSE(desktop.monitor("DUMMY1").on);

    service.setClosed(true);

    EXPECT_TRUE(session->says("Lost display recovered automatically"));
    EXPECT_TRUE(desktop.monitor("DUMMY1").on);
    EXPECT_FALSE(isChecked("Built-in Display power"));
    EXPECT_TRUE(isChecked("External Display power"));
    EXPECT_FALSE(session->element("External Display power").isEnabled())
        << "the last screen that anybody can see";
}

TEST_F(LidTest, ASystemBusThatHangsDelaysNeitherStartNorEnd) {
    const support::SilentSocket hanging(home.path() / "system");

    start();
    session->act("External Display power");
    EXPECT_TRUE(session->says("External Display is off"));

    session->application().process().signal(SIGTERM);
    EXPECT_TRUE(session->exitsWith(0));
    EXPECT_EQ(desktop.monitorsOn(), 2);
}

class LidWithTwoMonitorsTest : public LidTest {
protected:
    LidWithTwoMonitorsTest() : LidTest(3) {}

    /// No refresh is under way then: the end of one is told in the place of what a switch says of
    /// itself, and what shows the panel as off is the end of the only one.
    bool showsThePanelAsOff() const {
        const auto isOff = [&] { return !isChecked("Built-in Display power"); };
        return waitUntil([&] {
            if (isOff()) {
                return true;
            }
            session->act("Refresh displays");
            return waitUntil(isOff, std::chrono::seconds(3));
        });
    }

    /// The one watchdog that runs, awaited; 0 if there never is exactly one.
    pid_t watchdog() const {
        std::vector<pid_t> found;
        waitUntil([&] {
            found =
                tavrel::watchdog::processesOf(TAVREL_WATCHDOG, "DISPLAY=" + desktop.displayName());
            return found.size() == 1;
        });
        return found.size() == 1 ? found.front() : 0;
    }
};

TEST_F(LidWithTwoMonitorsTest, TwoQuickFlipsBesideAClosedLidLeaveOneOn) {
    startBus();
    const LidService service(bus->address(), LidService::Kind::login, true);
    start();
    ASSERT_TRUE(showsThePanelAsOff());
    ASSERT_EQ(desktop.monitorsOn(), 3) << "the panel is driven all the same";
    support::SwitchCount count(desktop.displayName());
    const pid_t late = watchdog();
    ASSERT_NE(late, 0);
    ASSERT_EQ(::kill(late, SIGSTOP), 0);
    for (const std::string name : {"External Display 1", "External Display 2"}) {
        ASSERT_TRUE(session->act(name + " power"));
        ASSERT_TRUE(session->says("Turning off " + name + "…"));
    }

    ASSERT_EQ(::kill(late, SIGCONT), 0);

    EXPECT_TRUE(
        session->says("The desktop couldn’t change the desktop display layout (error 1004)"));
    EXPECT_NE(desktop.monitor("DUMMY1").on, desktop.monitor("DUMMY2").on);
    EXPECT_EQ(count.switchedOn(), 0);
}

}  // namespace
}  // namespace tavrel::e2e
