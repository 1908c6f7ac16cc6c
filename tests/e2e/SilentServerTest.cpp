#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/e2e/WatchdogSession.h"
#include "tests/platform/x11/ServerProcess.h"
#include "tests/support/TemporaryFolder.h"

/// The server says nothing for longer than anybody waits while a display is switched off. That is
/// no answer, and above all not "no".
namespace tavrel::e2e {
namespace {

using support::waitUntil;

class SilentServerTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run.isUp); }

    support::Environment silentBefore(const std::string& request) const {
        const char* sanitizer = std::getenv("ASAN_OPTIONS");
        return {{"LD_PRELOAD", SILENT_SERVER},
                {"SILENT_BEFORE", request},
                {"SILENT_MARK", givenUp.string()},
                // It wants to be loaded before all others.
                {"ASAN_OPTIONS", (sanitizer == nullptr ? "" : sanitizer + std::string(":")) +
                                     "verify_asan_link_order=0"}};
    }

    /// The application asks for it, and hears nothing until it is told that nobody knows.
    void switchOffUnanswered() {
        run.press(1);
        ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(givenUp); }));
        server.resume();
        ASSERT_TRUE(run.session->says(
            "The desktop couldn’t change the desktop display layout (error 1006)"))
            << run.session->window();
    }

    support::TemporaryFolder folder;
    const std::filesystem::path givenUp = folder.path() / "given-up";
    WatchdogSession run;
    ServerProcess server{run.desktop};
};

/// The display is off by the time the server falls silent, and nobody has heard of that.
class OffAllTheSameTest : public SilentServerTest {
protected:
    void SetUp() override {
        run.start(silentBefore("screen size"));
        SilentServerTest::SetUp();
        switchOffUnanswered();
        ASSERT_EQ(run.desktop.monitorsOn(), 2);
        ASSERT_TRUE(run.storeComesToName(1));
    }
};

TEST_F(OffAllTheSameTest, ComesBackWhenTheApplicationIsKilled) {
    ::kill(run.application(), SIGKILL);

    EXPECT_TRUE(run.allComeBackAsTheyWere());
    EXPECT_TRUE(run.nothingIsLeftRunning());
}

TEST_F(OffAllTheSameTest, ComesBackByTheNextWatchdogWhenBothAreKilledInTurn) {
    const pid_t first = run.watchdog();
    ::kill(first, SIGKILL);
    ASSERT_TRUE(waitUntil([&] {
        const pid_t next = run.watchdog();
        return next != 0 && next != first;
    }));

    ::kill(run.application(), SIGKILL);

    EXPECT_TRUE(run.allComeBackAsTheyWere());
}

TEST_F(OffAllTheSameTest, ComesBackAtTheNextStartWhenBothAreKilledAtOnce) {
    run.killBoth();
    ASSERT_TRUE(run.nothingIsLeftRunning());
    ASSERT_EQ(run.desktop.monitorsOn(), 2);

    run.start();
    ASSERT_TRUE(run.isUp);

    EXPECT_EQ(run.desktop.monitors(), run.atFirst);
    EXPECT_TRUE(run.storeComesToName(0));
}

/// The server falls silent before it has been asked for anything.
class NeverOffTest : public SilentServerTest {
protected:
    void SetUp() override {
        SilentServerTest::SetUp();
        const std::string tried = monitorOfFirstRow();
        run.start(silentBefore("grab"));
        SilentServerTest::SetUp();
        switchOffUnanswered();
        ASSERT_EQ(run.desktop.monitors(), run.atFirst);
        ASSERT_TRUE(run.storeComesToName(0)) << "no look has settled it";

        run.desktop.otherClient().switchOff(tried);
        left = run.desktop.monitors();
    }

    std::string monitorOfFirstRow() {
        EXPECT_TRUE(run.pressAndAwait(1, "off"));
        std::string name;
        for (const support::Monitor& each : run.desktop.monitors()) {
            name = each.on ? name : each.name;
        }
        EXPECT_TRUE(run.pressAndAwait(1, "on"));
        return name;
    }

    /// As another program has left them by switching the same display off.
    std::vector<support::Monitor> left;
};

TEST_F(NeverOffTest, WhatAnotherProgramThenSwitchesOffStaysOffWhenTheApplicationIsKilled) {
    ::kill(run.application(), SIGKILL);

    EXPECT_TRUE(run.nothingIsLeftRunning());
    EXPECT_EQ(run.desktop.monitors(), left);
}

TEST_F(NeverOffTest, WhatAnotherProgramThenSwitchesOffStaysOffAtTheNextStart) {
    run.killBoth();

    run.start();
    ASSERT_TRUE(run.isUp);

    EXPECT_EQ(run.desktop.monitors(), left);
}

}  // namespace
}  // namespace tavrel::e2e
