#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

#include "tests/e2e/Session.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MessageBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/watchdog/Processes.h"

/// The application where it was installed, far from its build tree.
namespace tavrel::e2e {
namespace {

using testing::IsEmpty;

class InstalledTest : public testing::Test {
protected:
    InstalledTest() {
        support::runToEnd({CMAKE_PROGRAM, "--install", BUILD_FOLDER, "--prefix", prefix.path()},
                          support::bareEnvironment());
    }

    Session start() const { return Session(desktop, home, {}, prefix.path() / INSTALLED_PROGRAM); }

    std::vector<pid_t> watchdogs() const {
        return watchdog::processesOf(watchdogFile, "DISPLAY=" + desktop.displayName());
    }

    support::TemporaryFolder prefix;
    const std::filesystem::path watchdogFile = prefix.path() / INSTALLED_WATCHDOG;
    support::VirtualDesktop desktop{{.accessibility = true}};
    support::UserHome home;
};

TEST_F(InstalledTest, TheApplicationStartsTheWatchdogFromTheLibexecFolder) {
    const Session session = start();

    EXPECT_TRUE(session.says("Found 3 displays"));
    EXPECT_TRUE(support::waitUntil([&] { return watchdogs().size() == 1; }));
}

TEST_F(InstalledTest, WithoutItsWatchdogTheApplicationSwitchesByItself) {
    std::filesystem::rename(watchdogFile, prefix.path() / "elsewhere");
    const Session session = start();
    ASSERT_TRUE(session.says("Found 3 displays"));

    session.act("External Display 2 power");

    EXPECT_TRUE(session.says("External Display 2 is off"));
    EXPECT_FALSE(desktop.monitor("DUMMY1").on);
    session.act("External Display 2 power");
    EXPECT_TRUE(session.says("External Display 2 is on"));
    EXPECT_TRUE(desktop.monitor("DUMMY1").on);
}

TEST_F(InstalledTest, AWatchdogThatCannotBeStartedAtFirstIsStartedLaterAndToldWhatIsOff) {
    std::filesystem::permissions(watchdogFile, std::filesystem::perms::owner_read);
    Session session = start();
    ASSERT_TRUE(session.says("Found 3 displays"));
    session.act("External Display 2 power");
    ASSERT_TRUE(session.says("External Display 2 is off"));
    ASSERT_THAT(watchdogs(), IsEmpty());

    std::filesystem::permissions(watchdogFile, std::filesystem::perms::owner_all);

    ASSERT_TRUE(support::waitUntil([&] { return watchdogs().size() == 1; }));
    // It is told first; what it does after that shows that it knows.
    session.act("External Display 3 power");
    ASSERT_TRUE(session.says("External Display 3 is off"));
    session.application().process().signal(SIGKILL);
    EXPECT_TRUE(support::waitUntil([&] { return desktop.monitorsOn() == 3; }));
}

TEST_F(InstalledTest, TheMessageBusStartsItWhenAKeyOfTheDesktopWantsAllAwake) {
    support::Environment environment = support::bareEnvironment();
    environment["DISPLAY"] = desktop.displayName();
    environment["QT_QPA_PLATFORM"] = "xcb";
    environment["HOME"] = environment["XDG_RUNTIME_DIR"] = home.path();
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nowhere";
    const support::MessageBus bus(
        home.path(), "session", home.janitor(),
        {.services = prefix.path() / INSTALLED_SERVICES, .environment = environment});
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();

    support::runToEnd({"gapplication", "action", TAVREL_APPLICATION_ID, "wake"}, environment);

    std::vector<pid_t> started;
    // Its watchdog, too, is this program for a moment, until it becomes another.
    ASSERT_TRUE(support::waitUntil([&] {
        started = watchdog::processesOf(prefix.path() / INSTALLED_PROGRAM,
                                        "DISPLAY=" + desktop.displayName());
        return started.size() == 1;
    }));
    EXPECT_TRUE(support::waitUntil([&] {
        return support::AppWindow::find(desktop.displayName(), started.front()).has_value();
    }));
    ::kill(started.front(), SIGTERM);
    EXPECT_TRUE(support::waitUntil([&] { return watchdogs().empty(); }));
}

TEST_F(InstalledTest, ItsDesktopFileIsValid) {
    const auto file =
        prefix.path() / INSTALLED_DESKTOP_FILES / (TAVREL_APPLICATION_ID + std::string(".desktop"));
    ASSERT_NE(support::readFile(file), "");

    EXPECT_EQ(support::runToEnd({"desktop-file-validate", file}, support::bareEnvironment()), "");
}

}  // namespace
}  // namespace tavrel::e2e
