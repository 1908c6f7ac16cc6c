#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <optional>
#include <vector>

#include "tests/e2e/KillRounds.h"
#include "tests/scenario/PlasmaStage.h"
#include "tests/watchdog/Processes.h"

/// Application, watchdog and compositor are killed or held up on a Plasma desktop.
namespace tavrel::e2e {
namespace {

using scenario::Display;
using support::waitUntil;

class PlasmaRecoveryTest : public testing::Test {
protected:
    void SetUp() override {
        if (!support::PlasmaDesktop::isInstalled()) {
            GTEST_SKIP() << "Plasma's compositor, kwin_wayland, is not installed";
        }
        stage.emplace(3, TAVREL_PROGRAM);
    }

    std::vector<pid_t> watchdogs() const {
        return watchdog::processesOf(TAVREL_WATCHDOG,
                                     "WAYLAND_DISPLAY=" + stage->desktop().displayName());
    }
    void killWatchdog() const {
        for (const pid_t each : watchdogs()) {
            ::kill(each, SIGKILL);
        }
    }
    bool isOff(Display display) { return !stage->server().at(display).isOn; }
    bool switchesOff(Display display) {
        stage->flip(display);
        return waitUntil([&] { return isOff(display) && showsSwitch(display, false); });
    }
    bool showsSwitch(Display display, bool on) {
        const auto rows = stage->window().rows;
        return display < rows.size() && !rows[display].isBusy && rows[display].isOn == on;
    }
    bool allIsAsAtFirst() {
        return waitUntil([&] { return stage->server() == stage->serverAtFirst(); });
    }

    mutable std::optional<scenario::PlasmaStage> stage;
};

TEST_F(PlasmaRecoveryTest, AKilledApplicationLeavesNothingOff) {
    ASSERT_TRUE(switchesOff(0));
    ASSERT_TRUE(switchesOff(2));

    const auto killed = std::chrono::steady_clock::now();
    stage->crashApplication();

    EXPECT_TRUE(allIsAsAtFirst());
    const std::chrono::duration<double, std::milli> took =
        std::chrono::steady_clock::now() - killed;
    std::cout << "all displays were back after " << took.count() << " ms\n";
    EXPECT_TRUE(waitUntil([&] { return watchdogs().empty(); }));
}

TEST_F(PlasmaRecoveryTest, AKilledWatchdogIsReplacedByOneThatKnowsWhatIsOff) {
    ASSERT_TRUE(switchesOff(1));
    const std::vector<pid_t> first = watchdogs();
    ASSERT_EQ(first.size(), 1U);

    killWatchdog();

    EXPECT_TRUE(waitUntil([&] { return watchdogs().size() == 1 && watchdogs() != first; }));
    EXPECT_TRUE(isOff(1));
    ASSERT_TRUE(switchesOff(2));
    stage->crashApplication();
    EXPECT_TRUE(allIsAsAtFirst());
}

TEST_F(PlasmaRecoveryTest, ACompositorThatHangsDoesLaterWhatItWasAskedFor) {
    ASSERT_TRUE(waitUntil([&] { return watchdogs().size() == 1; }));
    const std::vector<pid_t> watchdog = watchdogs();
    stage->desktop().pause();
    stage->flip(1);
    EXPECT_TRUE(waitUntil([&] { return stage->window().rows.at(1).isBusy; }));
    // Longer than questions wait for an answer.
    std::this_thread::sleep_for(std::chrono::seconds(fromEnvironment("TAVREL_HANG_SECONDS", 4)));
    stage->desktop().resume();

    EXPECT_TRUE(waitUntil([&] { return isOff(1) && showsSwitch(1, false); }));
    EXPECT_EQ(watchdogs(), watchdog) << "nobody is taken for hanging but the compositor";
    stage->quitApplication();
    EXPECT_TRUE(allIsAsAtFirst());
}

TEST_F(PlasmaRecoveryTest, ACompositorThatEndsTakesTheWindowAndNotTheWatchdog) {
    ASSERT_TRUE(switchesOff(1));
    const std::vector<pid_t> watchdog = watchdogs();

    stage->desktop().kill();
    // The toolkit ends a program whose window is gone for good.
    ASSERT_TRUE(stage->application().process().waitForEnd().has_value());
    EXPECT_EQ(watchdogs(), watchdog);
    stage->desktop().start();

    EXPECT_TRUE(waitUntil([&] { return watchdogs().empty(); })) << "it has nothing left to do";
    EXPECT_TRUE(allIsAsAtFirst());
}

TEST_F(PlasmaRecoveryTest, WhatIsOffWhenAllAreKilledTogetherComesOnAtTheNextStart) {
    ASSERT_TRUE(switchesOff(1));

    stage->killApplication();
    stage->desktop().kill();
    stage->desktop().start();
    // A compositor may have kept on its disk that it is off; without hardware this one does not.
    stage->switchElsewhere({1}, false);
    ASSERT_TRUE(isOff(1));
    stage->startApplication();

    EXPECT_TRUE(allIsAsAtFirst());
    EXPECT_TRUE(waitUntil([&] { return showsSwitch(1, true); }));
}

TEST_F(PlasmaRecoveryTest, KillsAtAnyMomentLoseNoScreen) {
    KillRounds(*stage, [&] { return watchdogs(); }).run();
}

}  // namespace
}  // namespace tavrel::e2e
