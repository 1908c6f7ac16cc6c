#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/ReportedDisplays.h"
#include "tests/watchdog/application/CountedWatchdog.h"
#include "tests/watchdog/application/SerialSwitch.h"
#include "tests/watchdog/application/ThreadWatchdog.h"
#include "watchdog/application/GuardedSwitch.h"

namespace tavrel::watchdog {

/// A guarded switch over eight displays that are on, with watchdogs on threads of this process.
class GuardedSwitchTest : public testing::Test {
protected:
    static constexpr DisplayID displayCount = 8;

    GuardedSwitchTest() {
        for (DisplayID id = 1; id <= displayCount; ++id) {
            server.connect({.id = id});
        }
        useLongestWait(std::chrono::hours(1));
    }

    /// How long a rescue waits behind another change. Starts anew.
    void useLongestWait(std::chrono::milliseconds longestWait) {
        beginWith(longestWait);
        support::waitUntil([this] { return starts == 1; });
    }

    void beginWith(std::chrono::milliseconds longestWait,
                   std::chrono::milliseconds firstStart = std::chrono::milliseconds::zero()) {
        guarded.reset();
        starts = 0;
        guarded.emplace(
            displays, reported,
            SupervisorSetup{.startWatchdog = [this](const auto& first) { return start(first); },
                            .now = [this] { return now.load(); },
                            .stopwatch = [this] { return steadyTime() + skipped.load(); },
                            .answerTimeout = std::chrono::hours(1),
                            .urgentTimeout = longestWait,
                            .firstStart = firstStart});
    }

    /// The application ends without a goodbye.
    void endWithoutGoodbye() { guarded.reset(); }

    void killWatchdog() {
        const std::lock_guard lock(mutex);
        latest->kill();
    }

    /// Runs `body` on a thread for each display, all at once.
    static void forEachDisplayAtOnce(const std::function<void(DisplayID)>& body) {
        std::vector<std::thread> threads;
        threads.reserve(displayCount);
        for (DisplayID display = 1; display <= displayCount; ++display) {
            threads.emplace_back(body, display);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    bool isOn(DisplayID display) const { return server.find(display)->enabled; }

    SimulatedWindowServer server;
    SerialSwitch displays{server};
    std::function<Outcome()> decideOutcome;
    std::function<void()> beforeStart = [] {};
    ReportedDisplays reported;
    LinkUse use;
    std::atomic<int> starts = 0;
    std::atomic<int> refusedStarts = 0;
    std::atomic<std::chrono::nanoseconds> now = std::chrono::nanoseconds(std::chrono::minutes(1));
    /// How much longer everything seems to take than it does.
    std::atomic<std::chrono::nanoseconds> skipped = std::chrono::nanoseconds::zero();
    std::mutex mutex;
    /// Of the watchdog that was started last.
    std::shared_ptr<KillSwitch> latest;
    /// Last, because it uses all the others.
    std::optional<GuardedSwitch> guarded;

private:
    std::unique_ptr<RunningWatchdog> start(const std::vector<Message>& first) {
        beforeStart();
        if (refusedStarts > 0) {
            --refusedStarts;
            return nullptr;
        }
        auto started = std::make_unique<ThreadWatchdog>(displays, [this](DisplayID, bool) {
            return decideOutcome ? decideOutcome() : Outcome::succeeds;
        });
        // Each crash a minute after the last, or watchdogs would be given up.
        now = now.load() + std::chrono::minutes(1);
        {
            const std::lock_guard lock(mutex);
            latest = started->killSwitch();
        }
        sendAll(started->link(), first);
        ++starts;
        return std::make_unique<CountedWatchdog>(std::move(started), use);
    }
};

}  // namespace tavrel::watchdog
