#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/e2e/Session.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/watchdog/Processes.h"

/// The application where it was installed, far from its build tree.
namespace tavrel::e2e {
namespace {

using testing::SizeIs;

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
    EXPECT_THAT(watchdogs(), SizeIs(1));
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

}  // namespace
}  // namespace tavrel::e2e
