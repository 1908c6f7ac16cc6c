#include "watchdog/application/GuardedSwitch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/application/SerialSwitch.h"
#include "tests/watchdog/application/ThreadWatchdog.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;
using support::waitUntil;
using testing::ElementsAre;

constexpr DisplayID displayCount = 8;

class GuardedSwitchTest : public testing::Test {
protected:
    GuardedSwitchTest() {
        for (DisplayID id = 1; id <= displayCount; ++id) {
            server.connect({.id = id});
        }
        lifecycle.emplace(displays, SupervisorSetup{.startWatchdog = [this] { return start(); },
                                                    .now = [this] { return now.load(); }});
    }

    std::unique_ptr<RunningWatchdog> start() {
        auto guard = std::make_unique<ThreadWatchdog>(
            displays, [this](DisplayID, bool) { return decideFate ? decideFate() : Fate::lives; });
        // Each death a minute after the last, or guards would be given up.
        now = now.load() + 1min;
        {
            const std::lock_guard lock(mutex);
            latest = guard->lifeline();
        }
        ++starts;
        return guard;
    }

    bool isOn(DisplayID display) const { return server.find(display)->enabled; }

    SimulatedWindowServer server;
    SerialSwitch displays{server};
    std::function<Fate()> decideFate;
    std::atomic<std::chrono::nanoseconds> now = std::chrono::nanoseconds(1min);
    std::mutex mutex;
    /// Of the guard that was started last.
    std::shared_ptr<Lifeline> latest;
    std::atomic<int> starts = 0;
    std::optional<GuardedSwitch> lifecycle;
};

TEST_F(GuardedSwitchTest, itAnswersAsTheOneWithoutAGuardWould) {
    EXPECT_TRUE(lifecycle->canSwitch());
    EXPECT_EQ(lifecycle->setDisplayEnabled(1, false), 0);
    EXPECT_EQ(lifecycle->setDisplayEnabled(99, false), 1001);
    server.setCanControl(false);
    EXPECT_FALSE(lifecycle->canSwitch());
}

TEST_F(GuardedSwitchTest, withoutAGoodbyeWhatIsOffComesBack) {
    lifecycle->setDisplayEnabled(1, false);
    lifecycle->setDisplayEnabled(2, false);
    lifecycle.reset();
    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(GuardedSwitchTest, afterAGoodbyeWhatIsOffStaysOff) {
    lifecycle->setDisplayEnabled(1, false);
    lifecycle->goodbye();
    lifecycle->goodbye();
    lifecycle.reset();
    EXPECT_FALSE(isOn(1));
}

TEST_F(GuardedSwitchTest, aGuardThatDiesIdleIsReplacedWithoutBeingAskedForAnything) {
    lifecycle->setDisplayEnabled(1, false);
    {
        const std::lock_guard lock(mutex);
        latest->cut();
    }
    ASSERT_TRUE(waitUntil([&] { return starts == 2; }));
    lifecycle.reset();
    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, requestsFromManyThreadsEachGetTheirOwnAnswerOneChangeAtATime) {
    constexpr int threadCount = 8;
    constexpr int rounds = 200;
    std::atomic<int> wrong = 0;
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < rounds; ++round) {
                // Half of them ask for displays that are not there, so that answers differ.
                const DisplayID display = static_cast<DisplayID>(t) + 1 + (t % 2 == 0 ? 0 : 100);
                const ServerStatus expected = t % 2 == 0 ? 0 : 1001;
                wrong += lifecycle->setDisplayEnabled(display, round % 2 != 0) != expected ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(displays.overlaps(), 0);
    EXPECT_EQ(server.takeChanges().size(), threadCount * rounds);
}

/// Guards die at random under several threads' requests; every status must be true.
TEST_F(GuardedSwitchTest, everyStatusIsTrueHoweverOftenGuardsDie) {
    std::mt19937 random(20'240'401);
    int deaths = 0;
    decideFate = [&] {
        const auto drawn = random() % 6;
        deaths += drawn < 2 ? 1 : 0;
        return drawn == 0 ? Fate::diesBefore : drawn == 1 ? Fate::diesAfter : Fate::lives;
    };
    std::atomic<int> untrue = 0;
    std::atomic<int> refused = 0;
    std::vector<std::thread> threads;
    threads.reserve(displayCount);
    for (DisplayID display = 1; display <= displayCount; ++display) {
        threads.emplace_back([&, display] {
            bool isOnNow = true;
            for (int round = 0; round < 60; ++round) {
                const ServerStatus status = lifecycle->setDisplayEnabled(display, !isOnNow);
                if (status == serverStatus::success) {
                    isOnNow = !isOnNow;
                } else if (status == serverStatus::cannotComplete && isOnNow) {
                    ++refused;
                } else {
                    ++untrue;
                }
            }
            // Known to be off only if the last answer said so.
            untrue += displays.isOn(server, display) == isOnNow ? 0 : 1;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(untrue, 0);
    EXPECT_GT(refused, 0);
    EXPECT_GT(deaths, 50);
    EXPECT_EQ(displays.overlaps(), 0);
    // The last guard must be let live, or its duty would be nobody's.
    decideFate = {};
    lifecycle.reset();
    for (DisplayID display = 1; display <= displayCount; ++display) {
        EXPECT_TRUE(isOn(display)) << display;
    }
}

}  // namespace
}  // namespace tavrel::watchdog
