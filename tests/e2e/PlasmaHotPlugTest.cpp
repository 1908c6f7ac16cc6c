#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <thread>

#include "tests/scenario/PlasmaStage.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WaitUntil.h"

/// Monitors are pulled out of a real Plasma compositor, which has them as windows on an X server.
namespace tavrel::e2e {
namespace {

using scenario::Display;
using support::waitUntil;

class PlasmaHotPlugTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::PlasmaDesktop::isInstalled()) {
            GTEST_SKIP() << "Plasma's compositor, kwin_wayland, is not installed";
        }
    }
    void begin(std::size_t monitors) {
        stage.emplace(monitors, TAVREL_PROGRAM, xServer.displayName());
        // KWin 5.27 crashes when a monitor goes on which a window is just about to appear.
        ASSERT_TRUE(switchesTo(1, false));
    }

    static support::VirtualDesktop::Options oneMonitor() {
        support::VirtualDesktop::Options options;
        options.monitors = 1;
        return options;
    }
    /// Later than the application takes what happens for the echo of its own switching.
    void pullOut(Display display) {
        std::this_thread::sleep_for(std::chrono::milliseconds(2100));
        stage->desktop().unplug(stage->outputs().at(display));
    }
    bool isOn(Display display) { return stage->server().at(display).isOn; }
    bool shows(Display display, bool on) {
        const auto rows = stage->window().rows;
        return display < rows.size() && !rows[display].isBusy && rows[display].isOn == on;
    }
    bool switchesTo(Display display, bool on) {
        stage->flip(display);
        return waitUntil([&] { return isOn(display) == on && shows(display, on); });
    }

    support::VirtualDesktop xServer{oneMonitor()};
    std::optional<scenario::PlasmaStage> stage;
};

TEST_F(PlasmaHotPlugTest, WhatIsLeftWhenAMonitorIsPulledOutIsOnAndSwitchedAsBefore) {
    ASSERT_NO_FATAL_FAILURE(begin(3));

    pullOut(0);

    EXPECT_TRUE(waitUntil([&] { return shows(0, false) && shows(1, true) && shows(2, true); }))
        << stage->window();
    EXPECT_TRUE(switchesTo(2, false)) << stage->window();
    EXPECT_TRUE(switchesTo(2, true)) << stage->window();
    EXPECT_TRUE(isOn(1));
}

TEST_F(PlasmaHotPlugTest, WhatIsOffIsOnWhenTheOtherHasBeenPulledOut) {
    ASSERT_NO_FATAL_FAILURE(begin(2));

    pullOut(0);

    EXPECT_TRUE(waitUntil([&] { return isOn(1); })) << stage->server();
    EXPECT_TRUE(waitUntil([&] { return shows(0, false) && shows(1, true); })) << stage->window();
    EXPECT_FALSE(stage->window().rows.at(1).isSwitchEnabled) << "it is the last one";
}

}  // namespace
}  // namespace tavrel::e2e
