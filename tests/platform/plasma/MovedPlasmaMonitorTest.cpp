#include <gmock/gmock.h>

#include <chrono>
#include <string>

#include "platform/layout/RememberedOutputs.h"
#include "platform/plasma/PlasmaReconfigurationReports.h"
#include "platform/plasma/PlasmaWindowServer.h"
#include "tests/platform/DisplayAt.h"
#include "tests/platform/plasma/StandInPlasma.h"
#include "tests/platform/x11/ReportRecorder.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using Output = StandInPlasma::Output;
using support::waitUntil;
using testing::Contains;
using testing::Not;
using testing::Optional;

/// A monitor that says who it is at DP-3, at the right of two that don't.
class MovedPlasmaMonitorTest : public testing::Test {
protected:
    MovedPlasmaMonitorTest() { plug("DP-3", true); }

    void plug(const std::string& connector, bool isEnabled) {
        plasma.plug({.name = connector,
                     .edid = StandInPlasma::edidInBase64,
                     .x = 3840,
                     .isEnabled = isEnabled,
                     .priority = 3});
    }
    PlasmaServerOptions options() const {
        return {.displayName = plasma.displayName(), .timeout = std::chrono::milliseconds(2000)};
    }
    DisplayID idAt(const std::string& connector) { return displayAt(server, connector); }

    StandInPlasma plasma{2};
    SimulatedUserDefaults store;
    PlasmaWindowServer server{store, options()};
};

TEST_F(MovedPlasmaMonitorTest, OnAnotherPortItIsTheSameDisplay) {
    const DisplayID display = idAt("DP-3");
    ASSERT_NE(display, 0U);

    plasma.unplug("DP-3");
    plug("HDMI-1", true);

    EXPECT_EQ(idAt("HDMI-1"), display);
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
    EXPECT_FALSE(plasma.output("HDMI-1").isEnabled);
    EXPECT_TRUE(plasma.output("DP-1").isEnabled);
}

TEST_F(MovedPlasmaMonitorTest, SwitchedOffAtOnePortItComesOnAsItWasAtAnother) {
    plasma.change("DP-3", [](Output& output) { output.scale = 1.5; });
    const DisplayID display = idAt("DP-3");
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);

    plasma.unplug("DP-3");
    plug("HDMI-1", false);
    PlasmaWindowServer anotherProcess(store, options());
    ASSERT_EQ(anotherProcess.setDisplayEnabled(display, true), serverStatus::success);

    EXPECT_TRUE(plasma.output("HDMI-1").isEnabled);
    EXPECT_EQ(plasma.output("HDMI-1").scale, 1.5);
    EXPECT_EQ(plasma.output("HDMI-1").x, 3840);
    EXPECT_EQ(layout::RememberedOutputs(store).all(), layout::Memory{}) << "nothing left over";
}

TEST_F(MovedPlasmaMonitorTest, AnotherProcessCallsItTheSame) {
    const DisplayID display = idAt("DP-3");
    plasma.unplug("DP-3");
    plug("HDMI-1", true);
    ASSERT_EQ(idAt("HDMI-1"), display);

    PlasmaWindowServer helper(store, options());

    EXPECT_EQ(helper.now()->allDisplays(), server.now()->allDisplays());
}

TEST_F(MovedPlasmaMonitorTest, ItKeepsItsNumberWhileItsTwinComesAndGoes) {
    const DisplayID display = idAt("DP-3");

    plug("HDMI-1", true);
    const DisplayID twin = idAt("HDMI-1");
    EXPECT_EQ(idAt("DP-3"), display);
    EXPECT_NE(twin, 0U);
    plasma.unplug("DP-3");

    EXPECT_EQ(idAt("HDMI-1"), twin);
    EXPECT_THAT(server.now()->allDisplays(), Optional(Not(Contains(display))));
}

TEST_F(MovedPlasmaMonitorTest, WhatWasRememberedBeforeMonitorsWereKnownIsStillItsOwn) {
    // The number that comes of the monitor and its port alone.
    const DisplayID old = layout::stableHash("DP-3/1133/6699/7");
    layout::RememberedOutputs(store).update([&](layout::Memory memory) {
        memory.push_back({.display = old});
        return memory;
    });

    EXPECT_EQ(idAt("DP-3"), old);
    plasma.unplug("DP-3");
    plug("HDMI-1", true);

    EXPECT_EQ(idAt("HDMI-1"), old);
    EXPECT_EQ(server.setDisplayEnabled(old, true), serverStatus::success);
    EXPECT_EQ(layout::RememberedOutputs(store).all(), layout::Memory{});
}

TEST_F(MovedPlasmaMonitorTest, ReportsCallItTheSame) {
    const DisplayID display = idAt("DP-3");
    SimulatedUserDefaults storeOfReports;
    PlasmaReconfigurationReports reports(storeOfReports, options());
    ReportRecorder recorder;
    reports.registerCallback(ReportRecorder::callback, &recorder);

    plasma.unplug("DP-3");
    EXPECT_TRUE(waitUntil([&] {
        return recorder.contains({display, displayChange::remove | displayChange::disabled});
    }));
    plug("HDMI-1", true);
    EXPECT_TRUE(waitUntil([&] {
        return recorder.contains({display, displayChange::add | displayChange::enabled});
    }));
}

}  // namespace
}  // namespace tavrel
