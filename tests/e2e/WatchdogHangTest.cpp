#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>

#include <stdexcept>

#include "tests/e2e/WatchdogSession.h"
#include "tests/support/Keyboard.h"

/// The application or its watchdog is still there, and does nothing.
namespace tavrel::e2e {
namespace {

using support::waitUntil;

/// A process that is stopped while this exists.
class StoppedProcess {
public:
    explicit StoppedProcess(pid_t process) : process_(process) { ::kill(process_, SIGSTOP); }
    ~StoppedProcess() { ::kill(process_, SIGCONT); }
    StoppedProcess(const StoppedProcess&) = delete;
    StoppedProcess& operator=(const StoppedProcess&) = delete;

private:
    pid_t process_;
};

/// A child whose main thread is stopped, and no other, while this exists.
class StoppedMainThread {
public:
    /// Throws std::runtime_error where the system does not let a parent do that.
    explicit StoppedMainThread(pid_t child) : thread_(child) {
        if (ptrace(PTRACE_SEIZE, thread_, nullptr, nullptr) != 0 ||
            ptrace(PTRACE_INTERRUPT, thread_, nullptr, nullptr) != 0 ||
            waitpid(thread_, nullptr, __WALL) != thread_) {
            throw std::runtime_error("the thread cannot be stopped");
        }
    }
    ~StoppedMainThread() { ptrace(PTRACE_DETACH, thread_, nullptr, nullptr); }
    StoppedMainThread(const StoppedMainThread&) = delete;
    StoppedMainThread& operator=(const StoppedMainThread&) = delete;

private:
    pid_t thread_;
};

class WatchdogHangTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run.isUp); }

    /// As another program does, all at once.
    void switchAllOff() { run.desktop.otherClient().switchOff({"DUMMY0", "DUMMY1", "DUMMY2"}); }

    bool allComeOn() const {
        return waitUntil([&] { return run.desktop.monitorsOn() == 3; });
    }

    void quit() { run.session->application().process().signal(SIGTERM); }

    void expectNothingLeftOffOrRunning() {
        EXPECT_TRUE(run.session->exitsWith(0));
        EXPECT_EQ(run.desktop.monitors(), run.atFirst);
        EXPECT_TRUE(run.nothingIsLeftRunning());
    }

    WatchdogSession run;
};

TEST_F(WatchdogHangTest, WhileTheApplicationIsStoppedLostDisplaysComeBack) {
    {
        const StoppedProcess application(run.application());

        switchAllOff();

        EXPECT_TRUE(allComeOn());
    }
    EXPECT_TRUE(run.pressAndAwait(1, "off")) << "it goes on as before";
    EXPECT_EQ(run.desktop.monitorsOn(), 2);
}

TEST_F(WatchdogHangTest, WhileTheApplicationsMainThreadHangsLostDisplaysComeBack) {
    {
        const StoppedMainThread mainThread(run.application());

        switchAllOff();

        EXPECT_TRUE(allComeOn());
    }
    EXPECT_TRUE(run.pressAndAwait(1, "off")) << "it goes on as before";
    EXPECT_EQ(run.desktop.monitorsOn(), 2);
}

TEST_F(WatchdogHangTest, WhatIsOffComesBackWhenAStoppedApplicationIsKilled) {
    ASSERT_TRUE(run.pressAndAwait(1, "off"));
    const StoppedProcess application(run.application());
    switchAllOff();
    ASSERT_TRUE(allComeOn());

    ::kill(run.application(), SIGKILL);

    EXPECT_TRUE(run.nothingIsLeftRunning());
    EXPECT_EQ(run.desktop.monitorsOn(), 3);
}

TEST_F(WatchdogHangTest, WhileTheWatchdogIsStoppedTheApplicationBringsLostDisplaysBack) {
    const pid_t stopped = run.watchdog();
    const StoppedProcess watchdog(stopped);

    switchAllOff();

    // Far more than it takes, and less than a watchdog has while something is usable.
    EXPECT_TRUE(waitUntil([&] { return run.desktop.monitorsOn() == 3; }, std::chrono::seconds(20)));
    EXPECT_NE(run.watchdog(), stopped) << "another has taken its place";
    EXPECT_TRUE(run.session->says("Lost display recovered automatically"));
    EXPECT_TRUE(run.pressAndAwait(1, "off"));
    ::kill(run.application(), SIGKILL);
    EXPECT_TRUE(allComeOn());
}

TEST_F(WatchdogHangTest, QuittingWithAStoppedWatchdogSwitchesOnWhatIsOff) {
    ASSERT_TRUE(run.pressAndAwait(1, "off"));
    ASSERT_TRUE(run.pressAndAwait(3, "off"));
    const StoppedProcess watchdog(run.watchdog());

    quit();

    expectNothingLeftOffOrRunning();
}

TEST_F(WatchdogHangTest, QuittingWithAStoppedWatchdogUndoesASwitchInFlight) {
    const StoppedProcess watchdog(run.watchdog());
    run.press(1);
    ASSERT_TRUE(run.session->says("Turning off External Display 1…"));

    quit();

    expectNothingLeftOffOrRunning();
}

TEST_F(WatchdogHangTest, QuittingEndsAStoppedWatchdogWithNothingToDo) {
    const StoppedProcess watchdog(run.watchdog());

    quit();

    expectNothingLeftOffOrRunning();
}

/// Where the first attempt to switch a display on is refused.
class RefusedAtFirstTest : public WatchdogHangTest {
protected:
    void SetUp() override {
        WatchdogHangTest::SetUp();
        run.desktop.otherClient().connect("DUMMY3", 5760, 0);
        ASSERT_TRUE(run.session->says("Display setup changed — available screens restored"));
    }

    /// The third from the left, in whichever row it is.
    void switchThirdMonitorOff() {
        for (int row = 1; row <= 4 && run.desktop.monitor("DUMMY2").on; ++row) {
            ASSERT_TRUE(run.pressAndAwait(row, "off"));
            if (run.desktop.monitor("DUMMY2").on) {
                ASSERT_TRUE(run.pressAndAwait(row, "on"));
            }
        }
        ASSERT_EQ(run.desktop.monitorsOn(), 3);
    }

    /// Another program leaves no room for that one: one is where it was, and one so far to the
    /// right that the screen cannot grow any more.
    void takeTheRoom() const {
        run.desktop.otherClient().run(
            {"--output", "DUMMY1", "--pos", "5000x0", "--output", "DUMMY3", "--pos", "29000x0"});
    }
    void giveTheRoomBack() const { run.desktop.otherClient().setPosition("DUMMY1", 1920, 0); }

    /// The application lets the hot key go once it has tried to switch everything on.
    bool hotKeyIsReleased() const {
        return waitUntil([&] {
            try {
                const support::ChordHolder holder(run.desktop.displayName());
                return true;
            } catch (const std::runtime_error&) {
                return false;
            }
        });
    }
};

TEST_F(RefusedAtFirstTest, QuittingTriesAgainUntilItIsOn) {
    const support::Monitor third = run.desktop.monitor("DUMMY2");
    switchThirdMonitorOff();
    takeTheRoom();

    quit();
    ASSERT_TRUE(hotKeyIsReleased());
    EXPECT_FALSE(run.desktop.monitor("DUMMY2").on);
    giveTheRoomBack();

    EXPECT_TRUE(waitUntil([&] { return run.desktop.monitor("DUMMY2") == third; }));
    EXPECT_TRUE(run.session->exitsWith(0));
    EXPECT_TRUE(run.nothingIsLeftRunning());
}

}  // namespace
}  // namespace tavrel::e2e
