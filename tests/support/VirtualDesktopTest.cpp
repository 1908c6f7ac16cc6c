#include "tests/support/VirtualDesktop.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sstream>

#include "tests/support/ChildProcess.h"
#include "tests/support/DBus.h"
#include "tests/support/ProcessTable.h"
#include "tests/support/XConnection.h"

namespace tavrel::support {
namespace {

using testing::ElementsAre;

Monitor fullHd(const std::string& name, int x, bool primary) {
    Monitor monitor;
    monitor.name = name;
    monitor.connected = monitor.on = true;
    monitor.x = x;
    monitor.width = 1920;
    monitor.height = 1080;
    monitor.rotation = 1;
    monitor.primary = primary;
    return monitor;
}

std::vector<Monitor> withoutRefresh(std::vector<Monitor> monitors) {
    for (Monitor& monitor : monitors) {
        monitor.refresh = 0;
    }
    return monitors;
}

TEST(VirtualDesktop, ShowsThreeMonitorsSideBySide) {
    const VirtualDesktop desktop;

    EXPECT_THAT(withoutRefresh(desktop.monitors()),
                ElementsAre(fullHd("DUMMY0", 0, true), fullHd("DUMMY1", 1920, false),
                            fullHd("DUMMY2", 3840, false)));
    EXPECT_NEAR(desktop.monitor("DUMMY1").refresh, 60, 0.1);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{5760, 1080}));
    EXPECT_EQ(desktop.monitorsOn(), 3);
}

TEST(VirtualDesktop, LetsAnotherClientChangeTheLayout) {
    const VirtualDesktop desktop;
    const OtherClient client = desktop.otherClient();

    client.switchOff("DUMMY1");
    EXPECT_TRUE(desktop.monitor("DUMMY1").connected);
    EXPECT_FALSE(desktop.monitor("DUMMY1").on);

    client.switchOn("DUMMY1");
    client.setMode("DUMMY1", "1280x720");
    client.setPosition("DUMMY1", 0, 1080);
    client.setPrimary("DUMMY1");
    Monitor expected = fullHd("DUMMY1", 0, true);
    expected.y = 1080;
    expected.width = 1280;
    expected.height = 720;
    EXPECT_EQ(withoutRefresh({desktop.monitor("DUMMY1")}).front(), expected);
    EXPECT_FALSE(desktop.monitor("DUMMY0").primary);

    client.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    EXPECT_EQ(desktop.monitors().size(), 3U);
    EXPECT_EQ(desktop.monitorsOn(), 0);
}

TEST(VirtualDesktop, ConnectsAFurtherMonitorThatStaysConnectedWhenOff) {
    const VirtualDesktop desktop({.monitors = 1});
    ASSERT_EQ(desktop.monitors().size(), 1U);

    desktop.otherClient().connect("DUMMY5", 0, 1080);
    EXPECT_TRUE(desktop.monitor("DUMMY5").on);
    EXPECT_EQ(desktop.monitor("DUMMY5").y, 1080);

    desktop.otherClient().switchOff("DUMMY5");
    EXPECT_TRUE(desktop.monitor("DUMMY5").connected);
    EXPECT_FALSE(desktop.monitor("DUMMY5").on);
}

TEST(VirtualDesktop, CanComeWithoutRandR) {
    const VirtualDesktop desktop({.randr = false});
    const XConnection connection(desktop.displayName());

    EXPECT_THROW(desktop.monitors(), std::runtime_error);
}

TEST(VirtualDesktop, ReportsAServerThatRefusesItsArguments) {
    EXPECT_THROW(VirtualDesktop({.serverArguments = {"-no-such-argument"}}), std::runtime_error);
}

TEST(VirtualDesktop, TellsProgramsThatAssistiveTechnologyIsInUse) {
    const VirtualDesktop desktop({.monitors = 1, .accessibility = true});
    const DBus session(desktop.sessionBusAddress());

    const Variant enabled =
        session.property("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled");

    EXPECT_TRUE(g_variant_get_boolean(enabled.get()));
}

std::filesystem::path socketFile(const std::string& displayName) {
    return "/tmp/.X11-unix/X" + displayName.substr(1);
}

bool serverAnswers(const std::string& displayName) {
    try {
        const XConnection connection(displayName);
        return true;
    } catch (const std::runtime_error&) {
        return false;
    }
}

/// Whether there is a socket without a server. One with a server may be another desktop's.
bool hasStaleSocket(const std::string& displayName) {
    return !serverAnswers(displayName) && std::filesystem::exists(socketFile(displayName));
}

TEST(VirtualDesktop, LeavesNoSocketBehind) {
    std::string displayName;
    {
        const VirtualDesktop desktop({.monitors = 1, .accessibility = true});
        displayName = desktop.displayName();
        ASSERT_TRUE(std::filesystem::exists(socketFile(displayName)));
    }

    EXPECT_FALSE(hasStaleSocket(displayName));
}

TEST(VirtualDesktop, KeepsItsNumberWhenItsServerHasGone) {
    VirtualDesktop desktop({.monitors = 1});

    desktop.kill();
    const VirtualDesktop other({.monitors = 1});

    EXPECT_NE(other.displayName(), desktop.displayName());
}

TEST(VirtualDesktop, CanBeKilledUnderItsClients) {
    VirtualDesktop desktop;
    const XConnection client(desktop.displayName());

    desktop.kill();

    EXPECT_THROW(client.roundTrip(), std::runtime_error);
    EXPECT_THROW(desktop.monitors(), std::runtime_error);
}

bool isRunning(pid_t pid) {
    const std::vector<ListedProcess> running = runningProcesses();
    return std::any_of(running.begin(), running.end(),
                       [&](const ListedProcess& each) { return each.pid == pid; });
}

TEST(VirtualDesktop, IsCleanedUpWithItsProgramsWhenItsProcessIsKilled) {
    const TemporaryFolder folder;
    ChildProcess::Options options;
    options.command = {DOOMED_DESKTOP, TEST_WINDOW};
    options.standardOutput = folder.path() / "traces";
    const ChildProcess doomed(options);
    std::string displayName;
    std::string busAddress;
    std::string desktopFolder;
    std::string home;
    pid_t program = 0;
    ASSERT_TRUE(waitUntil([&] {
        std::istringstream traces(readFile(options.standardOutput));
        return traces >> displayName >> busAddress >> desktopFolder >> home >> program &&
               traces.get() == '\n';
    }));
    const XConnection client(displayName);
    ASSERT_NO_THROW(DBus{busAddress});
    ASSERT_TRUE(isRunning(program));

    doomed.signal(SIGKILL);

    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(desktopFolder); }));
    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::exists(home); }));
    EXPECT_FALSE(isRunning(program));
    EXPECT_THROW(client.roundTrip(), std::runtime_error);
    EXPECT_TRUE(waitUntil([&] { return !hasStaleSocket(displayName); }));
    EXPECT_THROW(DBus{busAddress}, DBusError);
}

}  // namespace
}  // namespace tavrel::support
