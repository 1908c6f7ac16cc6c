#include "watchdog/application/WatchdogProcess.h"

#include <gtest/gtest.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <future>
#include <memory>

#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/SharedDisplays.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

/// Watches another process as a debugger does, until this is destroyed. When that one dies, its
/// parent does not hear of it before then.
class Debugger {
public:
    explicit Debugger(pid_t watched) : pid_(fork()) {
        if (pid_ == 0) {
            _exit(watch(watched));
        }
        int status = 0;
        waitpid(pid_, &status, WUNTRACED);
        isWatching_ = WIFSTOPPED(status);
    }
    ~Debugger() {
        ::kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    Debugger(const Debugger&) = delete;
    Debugger& operator=(const Debugger&) = delete;

    bool isWatching() const { return isWatching_; }

private:
    static int watch(pid_t watched) {
        if (ptrace(PTRACE_SEIZE, watched, nullptr, nullptr) == 0) {
            // Shows that it is watching, and stays.
            raise(SIGSTOP);
        }
        return 1;
    }

    pid_t pid_;
    bool isWatching_ = false;
};

class WatchdogProcessTest : public testing::Test {
protected:
    WatchdogProcessTest() {
        setenv(SharedDisplays::variable, (folder.path() / "displays").c_str(), 1);
        watchdog = WatchdogProcess::start(STUB_WATCHDOG);
    }

    void SetUp() override { ASSERT_NE(watchdog, nullptr); }

    bool isRunning() const { return ::kill(watchdog->pid(), 0) == 0; }

    support::TemporaryFolder folder;
    std::unique_ptr<WatchdogProcess> watchdog;
};

TEST_F(WatchdogProcessTest, OneKnowsWhatIsOffAlsoWhenNobodyIsLeftToTellIt) {
    auto displays = SharedDisplays::ofEnvironment();
    ASSERT_EQ(displays.setDisplayEnabled(2, false), serverStatus::success);

    watchdog =
        WatchdogProcess::start(STUB_WATCHDOG, {{.kind = Message::Kind::alreadyOff, .display = 2}});
    watchdog.reset();

    EXPECT_TRUE(displays.isOn(2));
}

TEST_F(WatchdogProcessTest, AKilledOneIsGone) {
    watchdog->kill();

    EXPECT_FALSE(isRunning());
}

TEST_F(WatchdogProcessTest, ADismissedOneEndsByItself) {
    watchdog->dismiss();

    EXPECT_FALSE(isRunning());
}

TEST_F(WatchdogProcessTest, ADismissedOneThatIsStoppedIsKilled) {
    ::kill(watchdog->pid(), SIGSTOP);

    watchdog->dismiss();

    EXPECT_FALSE(isRunning());
}

TEST_F(WatchdogProcessTest, OneThatTheSystemKeepsAfterItsDeathIsNotWaitedFor) {
    auto debugger = std::make_unique<Debugger>(watchdog->pid());
    ASSERT_TRUE(debugger->isWatching());

    auto ending = std::async(std::launch::async, [&] {
        watchdog->kill();
        watchdog.reset();
    });

    EXPECT_EQ(ending.wait_for(support::defaultTimeout), std::future_status::ready);
    debugger.reset();
}

}  // namespace
}  // namespace tavrel::watchdog
