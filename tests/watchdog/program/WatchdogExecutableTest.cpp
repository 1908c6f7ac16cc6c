#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/layout/Identity.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/posix/FileDescriptor.h"
#include "platform/posix/FileUserDefaults.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WaitUntil.h"
#include "watchdog/application/WatchdogProcess.h"

/// The watchdog as it is installed, spoken to as the application does, at a real X server.
namespace tavrel::watchdog {
namespace {

using support::ChildProcess;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;
using testing::UnorderedElementsAre;
using Kind = Message::Kind;

constexpr std::chrono::seconds answerTimeout{30};

/// Starts watchdogs in an environment with nothing but the given X server.
class WatchdogExecutableTest : public testing::Test {
protected:
    /// Returns when it is ready.
    void startWatchdog(const std::string& displayName, const std::string& windowServer = {}) {
        setenv("DISPLAY", displayName.c_str(), 1);
        setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
        watchdog = WatchdogProcess::start(TAVREL_WATCHDOG, {}, windowServer);
        ASSERT_NE(watchdog, nullptr);
        EXPECT_EQ(watchdog->link().receive(answerTimeout), Received(Message{.kind = Kind::ready}));
    }

    ServerStatus ask(Kind kind, const std::string& output) {
        EXPECT_TRUE(watchdog->link().send({.kind = kind, .id = ++id, .display = idOf(output)}));
        const Received received = watchdog->link().receive(answerTimeout);
        const auto* answer = std::get_if<Message>(&received);
        EXPECT_TRUE(answer != nullptr && answer->kind == Kind::answer && answer->id == id);
        return answer != nullptr ? answer->status : -1;
    }

    /// The dummy driver's monitors have no EDID.
    static DisplayID idOf(const std::string& output) {
        return layout::stableHash(output + "/0/0/0");
    }

    /// Closes the connection and returns whether the watchdog has ended soon after.
    bool endsWhenAbandoned() {
        const pid_t pid = watchdog->pid();
        watchdog.reset();
        // On a busy machine its tries may take longer than is waited for above.
        return support::waitUntil([pid] { return ::waitpid(pid, nullptr, WNOHANG) != 0; });
    }

    std::filesystem::path proc() const { return "/proc/" + std::to_string(watchdog->pid()); }

    std::map<int, std::string> openDescriptors() const {
        std::map<int, std::string> open;
        for (const auto& entry : std::filesystem::directory_iterator(proc() / "fd")) {
            open[std::stoi(entry.path().filename().string())] =
                std::filesystem::read_symlink(entry.path()).string();
        }
        return open;
    }

    std::string textOf(const char* file) const { return support::readFile(proc() / file); }

    support::TemporaryFolder folder;
    std::unique_ptr<WatchdogProcess> watchdog;
    std::uint32_t id = 0;
};

TEST_F(WatchdogExecutableTest, HoldsNothingOfItsParentsButTheConnection) {
    // Two descriptors that are not closed when a program is started, one above all others.
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::optional<FileDescriptor> writeEnd(std::in_place, ends[1]);
    std::optional<FileDescriptor> highWriteEnd(std::in_place, fcntl(ends[1], F_DUPFD, 900));
    const FileDescriptor readEnd(ends[0]);

    startWatchdog("");

    EXPECT_THAT(openDescriptors(),
                UnorderedElementsAre(Pair(0, "/dev/null"), Pair(1, "/dev/null"),
                                     Pair(2, "/dev/null"), Pair(3, StartsWith("socket:"))));
    EXPECT_EQ(std::filesystem::read_symlink(proc() / "cwd"), "/");
    EXPECT_EQ(getsid(watchdog->pid()), watchdog->pid());
    writeEnd.reset();
    highWriteEnd.reset();
    char byte = 0;
    EXPECT_EQ(read(readEnd.number(), &byte, 1), 0) << "readers of its parent's output see its end";
}

TEST_F(WatchdogExecutableTest, ItsCommandLineNamesNoFolderThatMayBeCalledLikeTheApplication) {
    startWatchdog("");

    EXPECT_EQ(textOf("cmdline"), (std::string("display-watchdog\0"
                                              "3\0",
                                              19)));
}

TEST_F(WatchdogExecutableTest, LoadsNoToolkitAndHasNoThreadsButItsOwnItsStoresAndTheOneThatAsks) {
    startWatchdog("");

    EXPECT_THAT(textOf("maps"), HasSubstr("libxcb"));
    EXPECT_THAT(textOf("maps"), Not(HasSubstr("Qt")));
    // The thread that has tried to connect may be about to end.
    support::waitUntil(
        [this] { return textOf("status").find("Threads:\t3\n") != std::string::npos; });
    EXPECT_THAT(textOf("status"), HasSubstr("Threads:\t3\n"));
}

TEST_F(WatchdogExecutableTest, WithoutAServerEveryRequestIsAnsweredAndItEndsWithItsConnection) {
    startWatchdog("");

    EXPECT_EQ(ask(Kind::switchOff, "DUMMY0"), 1006);
    EXPECT_EQ(ask(Kind::switchOn, "DUMMY0"), 1006);
    EXPECT_TRUE(endsWhenAbandoned());
}

class WatchdogStartedByHandTest : public testing::TestWithParam<std::vector<std::string>> {};

TEST_P(WatchdogStartedByHandTest, IsRefusedInOneLine) {
    const support::TemporaryFolder output;
    ChildProcess::Options options;
    options.command = {TAVREL_WATCHDOG};
    options.command.insert(options.command.end(), GetParam().begin(), GetParam().end());
    options.standardError = output.path() / "err";

    const ChildProcess process(options);

    EXPECT_EQ(process.waitForEnd(), (ChildProcess::Ending{.exitStatus = 2, .signal = {}}));
    const std::string said = support::readFile(options.standardError);
    EXPECT_THAT(said, StartsWith("usage: display-watchdog "));
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1);
}

INSTANTIATE_TEST_SUITE_P(Arguments, WatchdogStartedByHandTest,
                         testing::ValuesIn(std::vector<std::vector<std::string>>{
                             {},
                             {""},
                             {"1"},
                             {"77"},
                             {"-1"},
                             {"3x"},
                             {"99999999999999999999"},
                             {"1", "2"},
                             {"--help"}}));

class WatchdogAtServerTest : public WatchdogExecutableTest {
protected:
    WatchdogAtServerTest() { startWatchdog(desktop.displayName()); }
    /// Before the server that it looks for.
    ~WatchdogAtServerTest() override { watchdog.reset(); }

    bool isOn(const std::string& output) const { return desktop.monitor(output).on; }

    /// Whether that many displays come to be on the disk as off. A slow one is waited for only so
    /// long before a display goes off, and is given the rest later.
    bool storeComesToName(std::size_t count) const {
        return support::waitUntil([&] {
            FileUserDefaults store(folder.path() / "tavrel/defaults.json");
            return layout::RememberedOutputs(store).all().size() == count;
        });
    }

    support::VirtualDesktop desktop;
    const std::vector<support::Monitor> atFirst = desktop.monitors();
};

TEST_F(WatchdogAtServerTest, WhenAbandonedItBringsBackWhatItSwitchedOffAsItWasAndEnds) {
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY0"), 0);
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY1"), 0);
    EXPECT_FALSE(isOn("DUMMY0"));
    EXPECT_FALSE(isOn("DUMMY1"));

    EXPECT_TRUE(endsWhenAbandoned());

    EXPECT_EQ(desktop.monitors(), atFirst);
    EXPECT_EQ(desktop.screenSize(), (support::ScreenSize{5760, 1080}));
}

TEST_F(WatchdogAtServerTest, UsesTheWindowServerThatItIsTold) {
    startWatchdog(desktop.displayName(), "none");

    EXPECT_EQ(ask(Kind::switchOff, "DUMMY0"), 1006);
    EXPECT_TRUE(isOn("DUMMY0"));
}

TEST_F(WatchdogAtServerTest, BringsBackWhatAnotherWatchdogSwitchedOffAsItWas) {
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY0"), 0);
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY2"), 0);
    ASSERT_TRUE(storeComesToName(2));
    watchdog->kill();
    EXPECT_FALSE(isOn("DUMMY0"));

    startWatchdog(desktop.displayName());
    for (const char* output : {"DUMMY0", "DUMMY2"}) {
        watchdog->link().send({.kind = Kind::alreadyOff, .display = idOf(output)});
    }
    EXPECT_TRUE(endsWhenAbandoned());

    EXPECT_EQ(desktop.monitors(), atFirst);
}

TEST_F(WatchdogAtServerTest, BringsBackAsTheyWereWhatOthersSwitchOffOnceItIsReady) {
    desktop.otherClient().switchOff(std::vector<std::string>{"DUMMY1", "DUMMY2"});

    EXPECT_EQ(ask(Kind::switchOn, "DUMMY2"), 0);
    EXPECT_EQ(ask(Kind::switchOn, "DUMMY1"), 0);

    EXPECT_EQ(desktop.monitors(), atFirst);
}

TEST_F(WatchdogAtServerTest, AGoodbyeLeavesNothingOff) {
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY1"), 0);

    watchdog->link().send({.kind = Kind::goodbye});

    EXPECT_TRUE(endsWhenAbandoned());
    EXPECT_EQ(desktop.monitors(), atFirst);
}

TEST_F(WatchdogAtServerTest, BytesThatAreNotAMessageNeverChangeTheLayout) {
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY1"), 0);
    MessageBytes bytes = encode({.kind = Kind::switchOff, .id = 9, .display = idOf("DUMMY2")});
    bytes[4] = 99;

    ASSERT_EQ(send(watchdog->link().descriptor(), bytes.data(), bytes.size(), 0),
              static_cast<ssize_t>(bytes.size()));
    watchdog->link().send({.kind = Kind::switchOff, .id = 10, .display = idOf("DUMMY2")});

    EXPECT_EQ(watchdog->link().receive(answerTimeout), Received(NoMessage::gone));
    EXPECT_FALSE(isOn("DUMMY1"));
    EXPECT_TRUE(isOn("DUMMY2"));
    EXPECT_TRUE(endsWhenAbandoned());
    EXPECT_EQ(desktop.monitors(), atFirst);
}

TEST_F(WatchdogAtServerTest, WhenTheServerIsGoneItStillAnswersAndEnds) {
    EXPECT_EQ(ask(Kind::switchOff, "DUMMY1"), 0);

    desktop.kill();

    EXPECT_EQ(ask(Kind::switchOff, "DUMMY2"), 1006);
    EXPECT_TRUE(endsWhenAbandoned());
}

#ifndef TAVREL_INSTRUMENTED
TEST_F(WatchdogAtServerTest, TakesAtMostTwoMebibytesThatItDoesNotShare) {
    for (int round = 0; round < 20; ++round) {
        for (const Kind kind : {Kind::switchOff, Kind::switchOn}) {
            ASSERT_EQ(ask(kind, "DUMMY0"), 0);
            ASSERT_EQ(ask(kind, "DUMMY1"), 0);
        }
    }

    std::map<std::string, long> kibibytes;
    std::istringstream rollup(textOf("smaps_rollup"));
    for (std::string line; std::getline(rollup, line);) {
        const auto colon = line.find(':');
        if (colon != std::string::npos) {
            kibibytes[line.substr(0, colon)] = std::strtol(line.c_str() + colon + 1, nullptr, 10);
        }
    }
    const long unshared = kibibytes["Private_Clean"] + kibibytes["Private_Dirty"];
    std::cout << "unshared memory after 80 switches: " << unshared << " KiB\n";
    EXPECT_GT(unshared, 0);
    EXPECT_LE(unshared, 2048);
}
#endif

}  // namespace
}  // namespace tavrel::watchdog
