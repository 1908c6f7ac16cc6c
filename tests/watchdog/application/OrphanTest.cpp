#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <csignal>
#include <optional>
#include <random>
#include <sstream>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/Processes.h"
#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/protocol/MessageSocket.h"

/// Real processes that really die: an application and its guard, with displays in a file.
namespace tavrel::watchdog {
namespace {

using support::ChildProcess;
using support::TemporaryFolder;
using support::waitUntil;
using testing::IsEmpty;
using testing::SizeIs;
using Trap = SharedDisplays::Trap;

class OrphanTest : public testing::Test {
protected:
    void startApplication(const std::string& guard = STUB_WATCHDOG) {
        auto ends = makeSocketPair();
        ASSERT_TRUE(ends.has_value());
        orders_.emplace(std::move(ends->first));
        ChildProcess::Options options;
        options.command = {STUB_APPLICATION, guard};
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

    std::vector<pid_t> guards() const { return processesOf(STUB_WATCHDOG, entry()); }

    /// The one guard there is, after a moment in which it may still be replaced; 0 when it
    /// is none or stays `former`.
    pid_t guard(pid_t former = 0) const {
        pid_t found = 0;
        // Decided by one look: in the next one another may be there, or none.
        waitUntil([&] {
            const std::vector<pid_t> now = guards();
            found = now.size() == 1 && now[0] != former ? now[0] : 0;
            return found != 0;
        });
        EXPECT_NE(found, 0);
        return found;
    }

    bool allComeOn() {
        return waitUntil([&] { return displays.onCount() == SharedDisplays::last; });
    }
    bool guardsEnd() const {
        return waitUntil([&] { return guards().empty(); });
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

TEST_F(OrphanTest, aKilledApplicationLeavesNoDisplayOffAndNoGuard) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    EXPECT_EQ(tell("off 3"), 0);
    EXPECT_EQ(displays.onCount(), 2);
    application->signal(SIGKILL);
    EXPECT_TRUE(allComeOn());
    EXPECT_TRUE(guardsEnd());
}

TEST_F(OrphanTest, neitherDoesOneThatCrashes) {
    for (const char* crash : {"abort", "segv"}) {
        startApplication();
        EXPECT_EQ(tell("off 2"), 0);
        tellOnly(crash);
        EXPECT_TRUE(allComeOn()) << crash;
        EXPECT_TRUE(guardsEnd());
        ASSERT_TRUE(application->waitForEnd().has_value());
        EXPECT_NE(application->waitForEnd(), (ChildProcess::Ending{.exitStatus = 0, .signal = {}}));
    }
}

TEST_F(OrphanTest, afterAGoodbyeDisplaysStayAsTheyAreAndTheGuardHasEnded) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    EXPECT_EQ(tell("goodbye"), 0);
    EXPECT_THAT(guards(), IsEmpty());
    EXPECT_EQ(tell("off 2"), 0);
    endInput();
    EXPECT_EQ(application->waitForEnd(),
              (ChildProcess::Ending{.exitStatus = 0, .signal = std::nullopt}));
    EXPECT_EQ(displays.onCount(), 2);
}

TEST_F(OrphanTest, anEndWithoutGoodbyeOrCrashBringsThemBackToo) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    endInput();
    ASSERT_TRUE(application->waitForEnd().has_value());
    EXPECT_EQ(displays.onCount(), SharedDisplays::last) << "the guard is waited for";
    EXPECT_THAT(guards(), IsEmpty());
}

TEST_F(OrphanTest, aKilledGuardIsReplacedAtOnceAndTheNewOneKnowsWhatIsOff) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    const pid_t first = guard();
    kill(first, SIGKILL);
    ASSERT_NE(guard(first), 0);
    EXPECT_EQ(displays.onCount(), 3);
    // Answers only once the replacement is complete.
    EXPECT_EQ(tell("off 9"), 1001);
    application->signal(SIGKILL);
    EXPECT_TRUE(allComeOn());
    EXPECT_TRUE(guardsEnd());
}

TEST_F(OrphanTest, aGuardThatDiesOverASwitchOnIsFollowedByOneThatMakesIt) {
    startApplication();
    for (const Trap trap : {Trap::before, Trap::after}) {
        EXPECT_EQ(tell("off 1"), 0);
        displays.setTrap(trap);
        EXPECT_EQ(tell("on 1"), 0);
        EXPECT_TRUE(displays.isOn(1));
        EXPECT_THAT(guards(), SizeIs(1));
    }
}

TEST_F(OrphanTest, aGuardThatDiesOverASwitchOffIsFollowedByOneThatTakesItBack) {
    startApplication();
    for (const Trap trap : {Trap::before, Trap::after}) {
        displays.setTrap(trap);
        EXPECT_EQ(tell("off 1"), 1004);
        EXPECT_TRUE(displays.isOn(1));
        EXPECT_THAT(guards(), SizeIs(1));
    }
}

TEST_F(OrphanTest, whereGuardsCannotLiveTheApplicationSwitchesItself) {
    for (const char* noGuard : {"/bin/true", "/nonexistent/guard", "/dev/null"}) {
        startApplication(noGuard);
        // `true` may die under the first one; then it is refused and taken back.
        int status = tell("off 1");
        if (status == 1004) {
            status = tell("off 1");
        }
        EXPECT_EQ(status, 0) << noGuard;
        EXPECT_FALSE(displays.isOn(1));
        EXPECT_EQ(tell("on 1"), 0);
    }
}

TEST_F(OrphanTest, theGuardIsOutOfReachOfSignalsToTheApplicationsGroupAndOfRequestsToEnd) {
    startApplication();
    EXPECT_EQ(tell("off 1"), 0);
    const pid_t first = guard();
    EXPECT_EQ(getsid(first), first);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
        kill(first, signal);
    }
    EXPECT_EQ(tell("off 2"), 0);
    EXPECT_EQ(guard(), first);
    kill(-application->pid(), SIGKILL);
    EXPECT_TRUE(allComeOn());
    EXPECT_TRUE(guardsEnd());
}

}  // namespace
}  // namespace tavrel::watchdog
