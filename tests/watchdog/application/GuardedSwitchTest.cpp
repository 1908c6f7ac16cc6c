#include "watchdog/application/GuardedSwitch.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/support/WaitUntil.h"
#include "tests/watchdog/ReportedDisplays.h"
#include "tests/watchdog/application/SerialSwitch.h"
#include "tests/watchdog/application/ThreadWatchdog.h"

namespace tavrel::watchdog {
namespace {

using namespace std::chrono_literals;

constexpr DisplayID displayCount = 8;

class GuardedSwitchTest : public testing::Test {
protected:
    GuardedSwitchTest() {
        for (DisplayID id = 1; id <= displayCount; ++id) {
            server.connect({.id = id});
        }
        useLongestWait(1h);
    }

    /// How long a rescue waits behind another change. Starts anew.
    void useLongestWait(std::chrono::milliseconds longestWait) {
        beginWith(longestWait);
        support::waitUntil([this] { return starts == 1; });
    }

    void beginWith(std::chrono::milliseconds longestWait) {
        guarded.reset();
        starts = 0;
        guarded.emplace(displays, reported,
                        SupervisorSetup{.startWatchdog = [this] { return start(); },
                                        .now = [this] { return now.load(); },
                                        .urgentTimeout = longestWait});
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
    std::atomic<int> starts = 0;
    std::atomic<int> refusedStarts = 0;
    std::atomic<std::chrono::nanoseconds> now = std::chrono::nanoseconds(1min);
    std::mutex mutex;
    /// Of the watchdog that was started last.
    std::shared_ptr<KillSwitch> latest;
    /// Last, because it uses all the others.
    std::optional<GuardedSwitch> guarded;

private:
    std::unique_ptr<RunningWatchdog> start() {
        beforeStart();
        if (refusedStarts > 0) {
            --refusedStarts;
            return nullptr;
        }
        auto started = std::make_unique<ThreadWatchdog>(displays, [this](DisplayID, bool) {
            return decideOutcome ? decideOutcome() : Outcome::succeeds;
        });
        // Each crash a minute after the last, or watchdogs would be given up.
        now = now.load() + 1min;
        {
            const std::lock_guard lock(mutex);
            latest = started->killSwitch();
        }
        ++starts;
        return started;
    }
};

TEST_F(GuardedSwitchTest, AnswersWhatTheSwitchWithoutAWatchdogWould) {
    EXPECT_TRUE(guarded->canSwitch());
    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(99, false), 1001);

    server.setCanControl(false);

    EXPECT_FALSE(guarded->canSwitch());
}

TEST_F(GuardedSwitchTest, WithoutAGoodbyeWhatIsOffComesBack) {
    guarded->setDisplayEnabled(1, false);
    guarded->setDisplayEnabled(2, false);

    endWithoutGoodbye();

    EXPECT_TRUE(isOn(1));
    EXPECT_TRUE(isOn(2));
}

TEST_F(GuardedSwitchTest, AGoodbyeBringsBackWhatIsOff) {
    guarded->setDisplayEnabled(1, false);

    guarded->goodbye();
    guarded->goodbye();

    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, AfterAGoodbyeWhatGoesOffStaysOff) {
    guarded->goodbye();

    guarded->setDisplayEnabled(1, false);
    guarded.reset();

    EXPECT_FALSE(isOn(1));
}

TEST_F(GuardedSwitchTest, ABeatStartsAWatchdogWhereThereIsNone) {
    refusedStarts = 1;
    killWatchdog();
    ASSERT_TRUE(support::waitUntil([&] { return refusedStarts == 0; }));

    now = now.load() + 1min;
    guarded->beat();

    EXPECT_TRUE(support::waitUntil([&] { return starts == 2; }));
}

TEST_F(GuardedSwitchTest, AWatchdogThatDiesIdleIsReplacedWithoutARequest) {
    guarded->setDisplayEnabled(1, false);

    killWatchdog();

    ASSERT_TRUE(support::waitUntil([&] { return starts == 2; }));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, RequestsFromManyThreadsGetTheirOwnAnswersOneChangeAtATime) {
    constexpr int rounds = 200;
    std::atomic<int> wrong = 0;

    forEachDisplayAtOnce([&](DisplayID display) {
        for (int round = 0; round < rounds; ++round) {
            // Half of them ask for displays that are not there, so that answers differ.
            const bool isThere = display % 2 != 0;
            const ServerStatus status =
                guarded->setDisplayEnabled(isThere ? display : display + 100, round % 2 != 0);
            wrong += status != (isThere ? 0 : 1001) ? 1 : 0;
        }
    });

    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(displays.overlaps(), 0);
    EXPECT_EQ(server.takeChanges().size(), displayCount * rounds);
}

/// A watchdog's change that hangs until it is let go, and the rescues beside it.
class RescueTest : public GuardedSwitchTest {
protected:
    RescueTest() {
        useLongestWait(0ms);
        decideOutcome = [this] {
            if (isHolding.exchange(false)) {
                hasBegun.set_value();
                letGo.get_future().wait();
            }
            return Outcome::succeeds;
        };
    }

    /// While what it uses is still there.
    ~RescueTest() override { endWithoutGoodbye(); }

    std::future<ServerStatus> hangWhileSwitchingOff(DisplayID display) {
        auto status = std::async(std::launch::async,
                                 [=, this] { return guarded->setDisplayEnabled(display, false); });
        hasBegun.get_future().wait();
        return status;
    }

    std::atomic<bool> isHolding = true;
    std::promise<void> hasBegun;
    std::promise<void> letGo;
};

TEST_F(RescueTest, DoesNotWaitBehindAChangeThatHangs) {
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);

    EXPECT_TRUE(isOn(2));
    EXPECT_EQ(guarded->changesEnded(), 1U);
    letGo.set_value();
    EXPECT_EQ(hanging.get(), 0) << "it was about another display";
}

TEST_F(RescueTest, IsTheLastWordAboutItsDisplayThoughTheHangingChangeIsMadeAfterIt) {
    auto hanging = hangWhileSwitchingOff(1);

    EXPECT_EQ(guarded->setDisplayEnabled(1, true), 0);
    letGo.set_value();

    EXPECT_EQ(hanging.get(), 1004);
    EXPECT_EQ(guarded->setDisplayEnabled(2, false), 0) << "whose turn is after the repetition";
    EXPECT_TRUE(isOn(1));
}

TEST_F(RescueTest, CallsOffASwitchOffThatIsStillWaiting) {
    auto hanging = hangWhileSwitchingOff(1);
    auto waiting =
        std::async(std::launch::async, [&] { return guarded->setDisplayEnabled(2, false); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);
    letGo.set_value();

    EXPECT_EQ(waiting.get(), 1004);
    EXPECT_EQ(hanging.get(), 0);
    EXPECT_EQ(guarded->setDisplayEnabled(3, false), 0);
    EXPECT_TRUE(isOn(2));
}

TEST_F(RescueTest, IsForgottenOnceItsTurnHasCome) {
    auto hanging = hangWhileSwitchingOff(1);
    guarded->setDisplayEnabled(1, true);
    letGo.set_value();
    hanging.wait();

    EXPECT_EQ(guarded->setDisplayEnabled(1, false), 0);

    EXPECT_FALSE(isOn(1));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(RescueTest, HandsOverWithoutWaitingBehindAChangeThatHangs) {
    server.switchFromOutside(2, false);
    auto hanging = hangWhileSwitchingOff(1);

    guarded->handOver({2});
    EXPECT_TRUE(guarded->isHandedOver());
    letGo.set_value();
    hanging.wait();
    endWithoutGoodbye();

    EXPECT_TRUE(isOn(2));
}

/// A watchdog that the system takes its time to load, until it is let go.
class SlowStartTest : public GuardedSwitchTest {
protected:
    SlowStartTest() {
        guarded.reset();
        beforeStart = [this] {
            if (!isStarting.exchange(true)) {
                letStart.get_future().wait();
            }
        };
    }

    /// While what it uses is still there.
    ~SlowStartTest() override { endWithoutGoodbye(); }

    void begin(std::chrono::milliseconds longestWait) {
        beginWith(longestWait);
        ASSERT_TRUE(support::waitUntil([this] { return isStarting.load(); }));
    }
    std::future<ServerStatus> switchOffMeanwhile(DisplayID display) {
        auto status = std::async(std::launch::async,
                                 [=, this] { return guarded->setDisplayEnabled(display, false); });
        EXPECT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
        return status;
    }

    std::atomic<bool> isStarting = false;
    std::promise<void> letStart;
};

TEST_F(SlowStartTest, NothingGoesOffUntilSomebodyIsThereToRememberIt) {
    std::atomic<int> madeByTheWatchdog = 0;
    decideOutcome = [&] {
        ++madeByTheWatchdog;
        return Outcome::succeeds;
    };
    begin(1h);
    auto status = switchOffMeanwhile(1);

    EXPECT_TRUE(isOn(1));
    letStart.set_value();

    EXPECT_EQ(status.get(), 0);
    EXPECT_FALSE(isOn(1));
    EXPECT_EQ(madeByTheWatchdog, 1);
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(SlowStartTest, WhatComesBackDoesNotWaitForIt) {
    server.switchFromOutside(2, false);
    begin(0ms);

    EXPECT_EQ(guarded->setDisplayEnabled(2, true), 0);

    EXPECT_TRUE(isOn(2));
    letStart.set_value();
}

TEST_F(SlowStartTest, IsToldWhatWasHandedOverBefore) {
    server.switchFromOutside(2, false);
    begin(1h);

    guarded->handOver({2});
    EXPECT_FALSE(guarded->isHandedOver());
    letStart.set_value();

    EXPECT_TRUE(support::waitUntil([&] { return guarded->isHandedOver(); }));
    endWithoutGoodbye();
    EXPECT_TRUE(isOn(2));
}

TEST_F(SlowStartTest, AGoodbyeBeforeItLeavesNobodyOff) {
    server.switchFromOutside(2, false);
    begin(1h);
    guarded->handOver({2});

    auto goodbye = std::async(std::launch::async, [&] { guarded->goodbye(); });
    ASSERT_TRUE(support::waitUntil([&] { return guarded->waiting() == 1; }));
    letStart.set_value();
    goodbye.wait();

    EXPECT_TRUE(isOn(2));
}

TEST_F(SlowStartTest, OneThatNeverComesLeavesTheChangesToTheApplication) {
    refusedStarts = 1000;
    begin(1h);
    auto status = switchOffMeanwhile(1);

    letStart.set_value();

    EXPECT_EQ(status.get(), 0);
    EXPECT_FALSE(isOn(1));
    guarded->goodbye();
    EXPECT_TRUE(isOn(1));
}

TEST_F(GuardedSwitchTest, EveryStatusIsTrueHoweverOftenWatchdogsCrash) {
    std::mt19937 random(20'240'401);
    int crashes = 0;
    decideOutcome = [&] {
        const auto drawn = random() % 6;
        crashes += drawn < 2 ? 1 : 0;
        return drawn == 0   ? Outcome::crashesBefore
               : drawn == 1 ? Outcome::crashesAfter
                            : Outcome::succeeds;
    };
    std::atomic<int> untrue = 0;
    std::atomic<int> refused = 0;

    forEachDisplayAtOnce([&](DisplayID display) {
        bool isOnNow = true;
        for (int round = 0; round < 60; ++round) {
            const ServerStatus status = guarded->setDisplayEnabled(display, !isOnNow);
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

    EXPECT_EQ(untrue, 0);
    EXPECT_GT(refused, 0);
    EXPECT_GT(crashes, 50);
    EXPECT_EQ(displays.overlaps(), 0);
    // The last watchdog must not crash: nobody would switch on what is off.
    decideOutcome = {};
    endWithoutGoodbye();
    for (DisplayID display = 1; display <= displayCount; ++display) {
        EXPECT_TRUE(isOn(display)) << display;
    }
}

}  // namespace
}  // namespace tavrel::watchdog
