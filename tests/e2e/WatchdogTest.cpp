#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <iostream>
#include <string>

#include "tests/e2e/WatchdogSession.h"

/// The application and its watchdog are killed in every way that leaves something to be done.
namespace tavrel::e2e {
namespace {

using support::waitUntil;
using testing::Contains;
using testing::IsEmpty;
using testing::SizeIs;

class WatchdogTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(run.isUp); }

    void switchTwoOff() {
        ASSERT_TRUE(run.pressAndAwait(1, "off"));
        ASSERT_TRUE(run.pressAndAwait(3, "off"));
        ASSERT_EQ(run.desktop.monitorsOn(), 1);
    }

    /// The monitor whose row has this number, found by switching it off and on again.
    std::string monitorOfRow(int row) {
        EXPECT_TRUE(run.pressAndAwait(row, "off"));
        std::string name;
        for (const support::Monitor& each : run.desktop.monitors()) {
            name = each.on ? name : each.name;
        }
        EXPECT_TRUE(run.pressAndAwait(row, "on"));
        return name;
    }

    WatchdogSession run;
};

class KilledApplicationTest : public WatchdogTest, public testing::WithParamInterface<int> {};

TEST_P(KilledApplicationTest, LeavesNoDisplayOffAndNoProcess) {
    switchTwoOff();

    const auto killed = std::chrono::steady_clock::now();
    ::kill(run.application(), GetParam());

    EXPECT_TRUE(run.allComeBackAsTheyWere());
    const std::chrono::duration<double, std::milli> took =
        std::chrono::steady_clock::now() - killed;
    std::cout << "all displays were back after " << took.count() << " ms\n";
#ifndef TAVREL_INSTRUMENTED
    EXPECT_LE(took, std::chrono::seconds(1));
#endif
    EXPECT_TRUE(run.session->application().process().waitForEnd().has_value());
    EXPECT_TRUE(run.nothingIsLeftRunning());
}

INSTANTIATE_TEST_SUITE_P(Signals, KilledApplicationTest, testing::Values(SIGKILL, SIGSEGV, SIGABRT),
                         [](const auto& each) {
                             return each.param == SIGKILL   ? "Kill"
                                    : each.param == SIGSEGV ? "SegmentationFault"
                                                            : "Abort";
                         });

TEST_F(WatchdogTest, KillingAllProcessesNamedAfterTheApplicationLeavesNoDisplayOff) {
    switchTwoOff();
    // As `pkill -KILL tavrel` does, but on this desktop only.
    const auto named = watchdog::processesNamed("tavrel", "DISPLAY=" + run.desktop.displayName());

    for (const pid_t each : named) {
        ::kill(each, SIGKILL);
    }

    EXPECT_THAT(named, Contains(run.application()));
    EXPECT_TRUE(run.allComeBackAsTheyWere());
    EXPECT_TRUE(run.nothingIsLeftRunning());
}

TEST_F(WatchdogTest, QuittingLeavesNoWatchdog) {
    switchTwoOff();

    run.session->application().process().signal(SIGTERM);

    EXPECT_TRUE(run.session->exitsWith(0));
    EXPECT_EQ(run.desktop.monitors(), run.atFirst);
    EXPECT_EQ(run.processes(), 0U) << "the application waits for its watchdog";
}

TEST_F(WatchdogTest, WhenKilledDuringASwitchOffItIsReplacedAndTheSwitchRefused) {
    const pid_t first = run.watchdog();
    ::kill(first, SIGSTOP);
    run.press(1);
    EXPECT_TRUE(run.session->says("Turning off External Display 1…"));

    ::kill(first, SIGKILL);

    EXPECT_TRUE(
        run.session->says("The desktop couldn’t change the desktop display layout (error 1004)"));
    EXPECT_EQ(run.desktop.monitors(), run.atFirst);
    EXPECT_NE(run.watchdog(), first);
    EXPECT_TRUE(run.pressAndAwait(1, "off"));
    EXPECT_EQ(run.desktop.monitorsOn(), 2);
}

TEST_F(WatchdogTest, WhenKilledDuringASwitchOnItIsReplacedAndTheNextSwitchesOn) {
    switchTwoOff();
    const pid_t first = run.watchdog();
    ::kill(first, SIGSTOP);
    run.press(1);
    EXPECT_TRUE(run.session->says("Waking External Display 1…"));

    ::kill(first, SIGKILL);

    EXPECT_TRUE(run.session->says("External Display 1 is on"));
    EXPECT_EQ(run.desktop.monitorsOn(), 2);
    EXPECT_NE(run.watchdog(), first);
    ::kill(run.application(), SIGKILL);
    EXPECT_TRUE(run.allComeBackAsTheyWere()) << "the next watchdog knows what is off";
}

TEST_F(WatchdogTest, WhenKilledAgainAndAgainItIsGivenUpAndTheApplicationSwitchesItself) {
    for (int crash = 0; crash < 3; ++crash) {
        const pid_t watchdog = run.watchdog();
        ASSERT_NE(watchdog, 0) << crash;
        ::kill(watchdog, SIGKILL);
        waitUntil([&] { return run.watchdogs() != std::vector{watchdog}; });
    }
    EXPECT_TRUE(waitUntil([&] { return run.watchdogs().empty(); }));

    switchTwoOff();
    EXPECT_THAT(run.watchdogs(), IsEmpty());
    EXPECT_TRUE(run.pressAndAwait(1, "on"));
    EXPECT_TRUE(run.pressAndAwait(3, "on"));

    EXPECT_EQ(run.desktop.monitors(), run.atFirst);
}

TEST_F(WatchdogTest, WhenBothAreKilledTheNextStartSwitchesOnWhatTheyLeftOff) {
    switchTwoOff();
    ASSERT_TRUE(run.storeComesToName(2));
    run.killBoth();
    EXPECT_TRUE(run.nothingIsLeftRunning());
    EXPECT_EQ(run.desktop.monitorsOn(), 1);

    run.start();
    ASSERT_TRUE(run.isUp);

    EXPECT_EQ(run.desktop.monitors(), run.atFirst);
    const scenario::Window window = run.session->window();
    ASSERT_THAT(window.rows, SizeIs(3));
    for (const scenario::Row& row : window.rows) {
        EXPECT_TRUE(row.isOn) << "listed as it is by then";
    }
}

TEST_F(WatchdogTest, WhenBothAreKilledWhatAnotherProgramSwitchedOffStaysOff) {
    const std::string others = monitorOfRow(3);
    ASSERT_TRUE(run.pressAndAwait(1, "off"));
    ASSERT_TRUE(run.storeComesToName(1));
    run.desktop.otherClient().switchOff(others);
    run.killBoth();

    run.start();
    ASSERT_TRUE(run.isUp);

    EXPECT_EQ(run.desktop.monitorsOn(), 2);
    EXPECT_FALSE(run.desktop.monitor(others).on);
}

TEST_F(WatchdogTest, WhenBothAreKilledWhatAnotherProgramSwitchedOnAndOffAgainStaysOff) {
    const std::string name = monitorOfRow(3);
    ASSERT_TRUE(run.pressAndAwait(3, "off"));
    ASSERT_TRUE(run.storeComesToName(1));
    run.desktop.otherClient().switchOn(name);
    ASSERT_TRUE(run.storeComesToName(0)) << "it was seen on";
    run.desktop.otherClient().switchOff(name);
    run.killBoth();

    run.start();
    ASSERT_TRUE(run.isUp);

    EXPECT_EQ(run.desktop.monitorsOn(), 2);
    EXPECT_FALSE(run.desktop.monitor(name).on);
}

TEST_F(WatchdogTest, WhenBothAreKilledAndNoScreenIsUsableTheNextStartBringsThemBack) {
    switchTwoOff();
    ASSERT_TRUE(run.storeComesToName(2));
    run.killBoth();
    for (const support::Monitor& monitor : run.desktop.monitors()) {
        if (monitor.on) {
            run.desktop.otherClient().switchOff(monitor.name);
        }
    }
    EXPECT_EQ(run.desktop.monitorsOn(), 0);

    run.session.emplace(run.desktop, run.home);

    // More only if nothing was usable for too long.
    EXPECT_TRUE(waitUntil([&] { return run.desktop.monitorsOn() >= 2; }));
    EXPECT_TRUE(run.storeComesToName(0));
}

}  // namespace
}  // namespace tavrel::e2e
