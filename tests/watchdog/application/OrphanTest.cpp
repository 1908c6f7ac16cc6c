#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <csignal>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/Processes.h"
#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/protocol/MessageSocket.h"

/// Real processes that really die: an application and its watchdog, with displays in a file.
namespace tavrel::watchdog {
namespace {

using support::ChildProcess;
using support::TemporaryFolder;
using support::waitUntil;
using testing::IsEmpty;
using testing::SizeIs;
using CrashPoint = SharedDisplays::CrashPoint;

class OrphanTest : public testing::Test {
protected:
    void startApplication(const std::string& program = STUB_WATCHDOG) {
        auto ends = makeSocketPair();
        ASSERT_TRUE(ends.has_value());
        orders_.emplace(std::move(ends->first));
        ChildProcess::Options options;
        options.command = {STUB_APPLICATION, program};
        options.environment = environment();
        options.descriptorThree = ends->second.number();
        application.emplace(options);
    }

    /// Has the application do this, and returns the status it answers.
    int tell(const std::string& order) {
        tellOnly(order);
        std::string answer;
        char next = 0;
        while (recv(orders_->number(), &next, 1, 0) == 1 && next != '\n') {
            answer += next;
        }
        return answer.empty() ? -1 : std::stoi(answer);
    }

    void tellOnly(const std::string& order) const {
        const std::string line = order + "\n";
        ASSERT_EQ(send(orders_->number(), line.data(), line.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(line.size()));
    }

    void endInput() { shutdown(orders_->number(), SHUT_WR); }

    std::vector<pid_t> watchdogs() const { return processesOf(STUB_WATCHDOG, entry()); }

    /// The one watchdog that runs, awaited; 0 if there never is exactly one, or none but
    /// `former`.
    pid_t watchdog(pid_t former = 0) const {
        pid_t found = 0;
        // Taken from one look: at the next one there may be another, or none.
        waitUntil([&] {
            const std::vector<pid_t> now = watchdogs();
            found = now.size() == 1 && now[0] != former ? now[0] : 0;
            return found != 0;
        });
        EXPECT_NE(found, 0);
        return found;
    }

    void expectNoDisplayOffAndNoWatchdog() const {
        EXPECT_TRUE(waitUntil([&] { return displays.onCount() == SharedDisplays::last; }));
        EXPECT_TRUE(waitUntil([&] { return watchdogs().empty(); }));
    }

    TemporaryFolder folder;
    SharedDisplays displays{folder.path() / "displays"};
    std::optional<ChildProcess> application;

private:
    std::string entry() const {
        return std::string(SharedDisplays::variable) + "=" + (folder.path() / "displays").string();
    }
    support::Environment environment() const {
        support::Environment all = support::bareEnvironment();
        all[SharedDisplays::variable] = (folder.path() / "displays").string();
        return all;
    }

    std::optional<FileDescriptor> orders_;
};

TEST_F(OrphanTest, AKilledApplicationLeavesNoDisplayOffAndNoWatchdog) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    EXPECT_EQ(tell("off 3"), 0);
    EXPECT_EQ(displays.onCount(), 2);

    application->signal(SIGKILL);

    expectNoDisplayOffAndNoWatchdog();
}

TEST_F(OrphanTest, AnApplicationThatCrashesLeavesNoDisplayOffAndNoWatchdog) {
    for (const char* crash : {"abort", "segv"}) {
        SCOPED_TRACE(crash);
        startApplication();
        EXPECT_EQ(tell("off 2"), 0);

        tellOnly(crash);

        expectNoDisplayOffAndNoWatchdog();
        ASSERT_TRUE(application->waitForEnd().has_value());
        EXPECT_NE(application->waitForEnd(), (ChildProcess::Ending{.exitStatus = 0, .signal = {}}));
    }
}

TEST_F(OrphanTest, AfterAGoodbyeEverythingIsOnAndTheWatchdogHasEnded) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);

    EXPECT_EQ(tell("goodbye"), 0);

    EXPECT_EQ(displays.onCount(), SharedDisplays::last);
    EXPECT_THAT(watchdogs(), IsEmpty());
    EXPECT_EQ(tell("off 2"), 0);
    endInput();
    EXPECT_EQ(application->waitForEnd(),
              (ChildProcess::Ending{.exitStatus = 0, .signal = std::nullopt}));
    EXPECT_EQ(displays.onCount(), 3);
}

TEST_F(OrphanTest, AnExitWithoutAGoodbyeWaitsUntilTheWatchdogHasSwitchedDisplaysOn) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);

    endInput();

    ASSERT_TRUE(application->waitForEnd().has_value());
    EXPECT_EQ(displays.onCount(), SharedDisplays::last);
    EXPECT_THAT(watchdogs(), IsEmpty());
}

TEST_F(OrphanTest, AKilledWatchdogIsReplacedAtOnceByOneThatKnowsWhatIsOff) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    const pid_t first = watchdog();

    kill(first, SIGKILL);

    ASSERT_NE(watchdog(first), 0);
    EXPECT_EQ(displays.onCount(), 3);
    // Answers only once the replacement is complete.
    EXPECT_EQ(tell("off 9"), 1001);
    application->signal(SIGKILL);
    expectNoDisplayOffAndNoWatchdog();
}

TEST_F(OrphanTest, ASwitchOnDuringWhichTheWatchdogCrashesIsMadeByTheNext) {
    startApplication();
    for (const CrashPoint point : {CrashPoint::before, CrashPoint::after}) {
        EXPECT_EQ(tell("off 1"), 0);
        displays.setCrashPoint(point);

        EXPECT_EQ(tell("on 1"), 0);

        EXPECT_TRUE(displays.isOn(1));
        EXPECT_THAT(watchdogs(), SizeIs(1));
    }
}

TEST_F(OrphanTest, ASwitchOffDuringWhichTheWatchdogCrashesIsUndoneByTheNext) {
    startApplication();
    for (const CrashPoint point : {CrashPoint::before, CrashPoint::after}) {
        displays.setCrashPoint(point);

        EXPECT_EQ(tell("off 1"), 1004);

        EXPECT_TRUE(displays.isOn(1));
        EXPECT_THAT(watchdogs(), SizeIs(1));
    }
}

TEST_F(OrphanTest, WhereNoWatchdogCanRunTheApplicationSwitchesItself) {
    for (const char* noWatchdog : {"/bin/true", "/nonexistent/watchdog", "/dev/null"}) {
        startApplication(noWatchdog);

        // `true` may end during the first one; then that is refused and undone.
        int status = tell("off 1");
        if (status == 1004) {
            status = tell("off 1");
        }

        EXPECT_EQ(status, 0) << noWatchdog;
        EXPECT_FALSE(displays.isOn(1));
        EXPECT_EQ(tell("on 1"), 0);
    }
}

TEST_F(OrphanTest, SignalsToTheApplicationsGroupAndRequestsToEndDoNotReachTheWatchdog) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    const pid_t first = watchdog();
    EXPECT_EQ(getsid(first), first);

    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        kill(first, signal);
    }

    EXPECT_EQ(tell("off 2"), 0);
    EXPECT_EQ(watchdog(), first);
    kill(-application->pid(), SIGKILL);
    expectNoDisplayOffAndNoWatchdog();
}

}  // namespace
}  // namespace tavrel::watchdog
