#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <functional>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/e2e/FromEnvironment.h"
#include "tests/scenario/Stage.h"

namespace tavrel::e2e {

/// Kills at random moments, again and again on one desktop: in turn the application, its watchdog
/// and both. The moments are drawn from TAVREL_SEED; TAVREL_KILL_ROUNDS says how many.
class KillRounds {
public:
    /// `watchdogs` are those that run. Both must outlive it.
    KillRounds(scenario::Stage& stage, std::function<std::vector<pid_t>()> watchdogs)
        : stage_(stage), watchdogs_(std::move(watchdogs)) {}

    /// Fails the test when a screen is lost or a process left over. Prints the figures.
    void run() {
        const int rounds = fromEnvironment("TAVREL_KILL_ROUNDS", 3);
        const auto seed = static_cast<unsigned>(
            fromEnvironment("TAVREL_SEED", static_cast<int>(std::random_device()() >> 1)));
        random_.seed(seed);
        std::cout << "TAVREL_SEED=" << seed << std::endl;
        for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
            SCOPED_TRACE("round " + std::to_string(round));
            switchSomething();
            switch (round % 3) {
                case 0:
                    killApplication();
                    break;
                case 1:
                    killWatchdog();
                    break;
                default:
                    killBoth();
            }
        }
        using Milliseconds = std::chrono::duration<double, std::milli>;
        std::cout << rounds << " rounds: the application was killed " << kills_[0]
                  << " times, its watchdog " << kills_[1] << " times, both " << kills_[2]
                  << " times; slowest return without the application: "
                  << Milliseconds(slowest_).count() << " ms" << std::endl;
    }

private:
    std::size_t draw(std::size_t bound) { return random_() % bound; }

    /// Flips one or two switches, and does not await the last: a random time later it may be
    /// anything between not begun and done.
    void switchSomething() {
        const std::size_t first = draw(3);
        if (draw(2) == 0) {
            stage_.flip(first);
            EXPECT_TRUE(stage_.await([&] { return !stage_.server()[first].isOn; }));
        }
        stage_.flip((first + 1 + draw(2)) % 3);
        std::this_thread::sleep_for(std::chrono::microseconds(draw(60'000)));
    }

    /// The watchdog brings everything back, and ends.
    void killApplication() {
        const auto killed = std::chrono::steady_clock::now();
        stage_.crashApplication();
        awaitAllAsAtFirst();
        slowest_ = std::max(slowest_, std::chrono::steady_clock::now() - killed);
        EXPECT_TRUE(stage_.await([&] { return watchdogs_().empty(); })) << "left over";
        ++kills_[0];
        stage_.startApplication();
    }

    /// The application goes on, with another.
    void killWatchdog() {
        const std::vector<pid_t> victims = watchdogs_();
        for (const pid_t victim : victims) {
            ::kill(victim, SIGKILL);
        }
        EXPECT_TRUE(stage_.await([&] {
            const std::vector<pid_t> now = watchdogs_();
            return now.size() == 1 && now != victims;
        }));
        ++kills_[1];
        // Waking leaves busy rows alone.
        EXPECT_TRUE(stage_.await([&] {
            const auto rows = stage_.window().rows;
            return rows.size() == 3 && std::none_of(rows.begin(), rows.end(),
                                                    [](const auto& row) { return row.isBusy; });
        }));
        stage_.pressWake();
        awaitAllAsAtFirst();
    }

    /// Nobody is left to bring anything back but the next start.
    void killBoth() {
        stage_.killApplication();
        EXPECT_TRUE(stage_.await([&] { return watchdogs_().empty(); })) << "left over";
        ++kills_[2];
        stage_.startApplication();
        awaitAllAsAtFirst();
    }

    void awaitAllAsAtFirst() {
        EXPECT_TRUE(stage_.await([&] { return stage_.server() == stage_.serverAtFirst(); }))
            << "a screen is lost, or not as it was: " << stage_.server();
    }

    scenario::Stage& stage_;
    std::function<std::vector<pid_t>()> watchdogs_;
    std::mt19937 random_;
    int kills_[3] = {};
    std::chrono::steady_clock::duration slowest_{0};
};

}  // namespace tavrel::e2e
