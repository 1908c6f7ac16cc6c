#include <optional>

#include "platform/gnome/GnomeReconfigurationReports.h"
#include "tests/platform/gnome/StandInGnomeTest.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using support::waitUntil;
using testing::Contains;
using testing::Not;
using testing::Optional;

class MovedGnomeMonitorTest : public StandInGnomeTest {
protected:
    void move(const std::string& from, const std::string& to) {
        gnome::Monitor monitor = monitorAt(from);
        gnome.unplug(from);
        monitor.connector = to;
        gnome.plug(monitor);
    }
};

TEST_F(MovedGnomeMonitorTest, OnAnotherPortItIsTheSameDisplay) {
    const DisplayID display = idAt("DP-3");

    move("DP-3", "HDMI-1");

    EXPECT_EQ(idAt("HDMI-1"), display);
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
    EXPECT_FALSE(gnome.isOn("HDMI-1"));
    EXPECT_TRUE(gnome.isOn("DP-1"));
}

TEST_F(MovedGnomeMonitorTest, SwitchedOffAtOnePortItComesOnAsItWasAtAnother) {
    const auto atFirst = gnome.state().logicalMonitors;
    const DisplayID display = idAt("DP-2");
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);

    gnome::Monitor monitor = monitorAt("DP-2");
    gnome.unplug("DP-2");
    monitor.connector = "HDMI-1";
    gnome.plugOff(monitor);
    ASSERT_EQ(anotherProcess().setDisplayEnabled(display, true), serverStatus::success);

    const auto now = gnome.state().logicalMonitors;
    ASSERT_EQ(now.size(), 3U);
    EXPECT_THAT(now, Contains(testing::AllOf(testing::Field(&gnome::LogicalMonitor::x, 1920),
                                             testing::Field(&gnome::LogicalMonitor::monitors,
                                                            testing::ElementsAre("HDMI-1")))));
    EXPECT_THAT(now, Contains(atFirst[2]));
    EXPECT_THAT(remembered(), testing::IsEmpty()) << "nothing left over";
}

TEST_F(MovedGnomeMonitorTest, AnotherProcessCallsItTheSame) {
    const DisplayID display = idAt("DP-3");
    move("DP-3", "HDMI-1");

    GnomeWindowServer helper = anotherProcess();

    EXPECT_THAT(helper.now()->allDisplays(), Optional(Contains(display)));
    EXPECT_EQ(helper.now()->allDisplays(), server.now()->allDisplays());
}

TEST_F(MovedGnomeMonitorTest, ItKeepsItsNumberWhileItsTwinComesAndGoes) {
    const DisplayID display = idAt("DP-3");
    gnome::Monitor twin = monitorAt("DP-3");
    twin.connector = "HDMI-1";

    gnome.plug(twin);
    const DisplayID twinAtHdmi = idAt("HDMI-1");
    EXPECT_EQ(idAt("DP-3"), display);
    EXPECT_NE(twinAtHdmi, 0U);
    gnome.unplug("DP-3");

    EXPECT_EQ(idAt("HDMI-1"), twinAtHdmi);
    EXPECT_THAT(server.now()->allDisplays(), Optional(Not(Contains(display))));
}

TEST_F(MovedGnomeMonitorTest, WhatWasRememberedBeforeMonitorsWereKnownIsStillItsOwn) {
    // The number that comes of the monitor and its port alone.
    const DisplayID old = layout::identify(gnome::identitiesIn(gnome.state()), {}).displays[2];
    layout::RememberedOutputs(store).update([&](layout::Memory memory) {
        memory.push_back({.display = old});
        return memory;
    });

    EXPECT_EQ(idAt("DP-3"), old);
    move("DP-3", "HDMI-1");

    EXPECT_EQ(idAt("HDMI-1"), old);
    EXPECT_EQ(server.setDisplayEnabled(old, true), serverStatus::success);
    EXPECT_THAT(remembered(), testing::IsEmpty());
}

TEST_F(MovedGnomeMonitorTest, ReportsCallItTheSame) {
    const DisplayID display = idAt("DP-3");
    SimulatedUserDefaults storeOfReports;
    GnomeReconfigurationReports reports(storeOfReports, options());
    ReportRecorder recorder;
    reports.registerCallback(&ReportRecorder::callback, &recorder);
    // Once it has seen how things are, changes are reported.
    int y = 0;
    ASSERT_TRUE(waitUntil([&] {
        gnome.change([&](gnome::MonitorState& state) { state.logicalMonitors[0].y = ++y; });
        return recorder.knows(idAt("DP-1"));
    }));
    gnome::Monitor monitor = monitorAt("DP-3");

    gnome.unplug("DP-3");
    EXPECT_TRUE(waitUntil([&] {
        return recorder.contains({display, displayChange::remove | displayChange::disabled});
    }));
    monitor.connector = "HDMI-1";
    gnome.plug(monitor);
    EXPECT_TRUE(waitUntil([&] {
        return recorder.contains({display, displayChange::add | displayChange::enabled});
    }));
}

}  // namespace
}  // namespace tavrel
