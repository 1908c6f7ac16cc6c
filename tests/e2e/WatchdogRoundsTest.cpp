#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <iostream>
#include <random>
#include <thread>

#include "tests/e2e/FromEnvironment.h"
#include "tests/e2e/WatchdogSession.h"

/// Kills at random moments, again and again on one desktop.
namespace tavrel::e2e {
namespace {

using support::waitUntil;

/// How many desktops there are, each in a test of its own, and how often something is killed
/// on each unless TAVREL_KILL_ROUNDS says otherwise.
constexpr int desktops = 4;
#ifndef TAVREL_INSTRUMENTED
constexpr int usualRounds = 15;
#else
constexpr int usualRounds = 5;
#endif

/// Kill rounds drawn from one seed, and what came of them.
class WatchdogRoundsTest : public testing::TestWithParam<int> {
protected:
    void SetUp() override {
        const auto seed = static_cast<unsigned>(
            fromEnvironment("TAVREL_SEED", static_cast<int>(std::random_device()() >> 1)));
        random.seed(seed);
        std::cout << "TAVREL_SEED=" << seed << std::endl;
        ASSERT_TRUE(run.isUp);
    }

    int draw(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }

    /// Presses one or two switches, and does not await the last: a random time later it may be
    /// anything between not begun and done.
    void switchSomething() {
        const int first = 1 + draw(3);
        if (draw(2) == 0) {
            EXPECT_TRUE(run.pressAndAwait(first, "off"));
        }
        run.press(1 + (first + draw(2)) % 3);
        std::this_thread::sleep_for(std::chrono::microseconds(draw(60'000)));
    }

    void restart() {
        run.start();
        ASSERT_TRUE(run.isUp);
        watchdogKills = 0;
    }

    /// The application dies; its watchdog brings everything back.
    void killApplication() {
        const int signals[] = {SIGKILL, SIGSEGV, SIGABRT};
        const auto killed = std::chrono::steady_clock::now();
        ::kill(run.application(), signals[draw(3)]);
        EXPECT_TRUE(run.allComeBackAsTheyWere());
        slowest = std::max(slowest, std::chrono::steady_clock::now() - killed);
        ++applicationKills;
        leftOver += run.nothingIsLeftRunning() ? 0 : static_cast<int>(run.processes());
        restart();
    }

    /// The watchdog dies; the application goes on, with another.
    void killWatchdog() {
        const pid_t victim = run.watchdog();
        ::kill(victim, SIGKILL);
        EXPECT_TRUE(waitUntil([&] { return run.watchdog() != victim; }));
        ++watchdogKills;
        ++watchdogKillsInAll;
        wakeAll();
    }

    /// Nobody is left to bring anything back but the next start and its user.
    void killBoth() {
        run.killBoth();
        ++bothKills;
        leftOver += run.nothingIsLeftRunning() ? 0 : static_cast<int>(run.processes());
        restart();
        wakeAll();
    }

    void wakeAll() {
        // Waking leaves busy rows alone.
        EXPECT_TRUE(waitUntil([&] {
            const auto rows = run.session->window().rows;
            return rows.size() == 3 && std::none_of(rows.begin(), rows.end(),
                                                    [](const auto& row) { return row.isBusy; });
        }));
        run.session->act("Wake both displays");
        EXPECT_TRUE(run.session->says("Both displays are on"));
        EXPECT_TRUE(run.allComeBackAsTheyWere());
    }

    WatchdogSession run;
    std::mt19937 random;
    int watchdogKills = 0;
    int applicationKills = 0;
    int watchdogKillsInAll = 0;
    int bothKills = 0;
    int leftOver = 0;
    std::chrono::steady_clock::duration slowest{0};
};

TEST_P(WatchdogRoundsTest, NoScreenIsLostAndNoProcessLeftOver) {
    const int rounds = fromEnvironment("TAVREL_KILL_ROUNDS", usualRounds);
    int lost = 0;
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        switchSomething();
        const int victim = draw(10);
        // After a third crash within ten seconds this application would have no watchdog.
        if (victim < 5 && watchdogKills < 2) {
            killWatchdog();
        } else if (victim < 8) {
            killApplication();
        } else {
            killBoth();
        }
        lost += 3 - run.desktop.monitorsOn();
    }
    using Milliseconds = std::chrono::duration<double, std::milli>;
    std::cout << rounds << " rounds: " << applicationKills << " times the application was killed, "
              << watchdogKillsInAll << " times its watchdog, " << bothKills
              << " times both; screens lost: " << lost << ", processes left over: " << leftOver
              << ", slowest return without the application: " << Milliseconds(slowest).count()
              << " ms" << std::endl;
    EXPECT_EQ(lost, 0);
    EXPECT_EQ(leftOver, 0);
    EXPECT_EQ(applicationKills + watchdogKillsInAll + bothKills, rounds);
}

INSTANTIATE_TEST_SUITE_P(Desktop, WatchdogRoundsTest, testing::Range(1, desktops + 1));

}  // namespace
}  // namespace tavrel::e2e
