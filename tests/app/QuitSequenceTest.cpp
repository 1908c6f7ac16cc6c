#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <future>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/QuitSequence.h"
#include "registry/DisplayRegistry.h"
#include "tests/simulated/SimulatedPlatform.h"
#ifdef __linux__
#include "tests/support/NoMoreThreads.h"
#endif
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;

/// A switch that blocks at a request until it is released.
class HeldSwitch : public DisplaySwitch {
public:
    explicit HeldSwitch(DisplaySwitch& inner) : inner_(inner) {}

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (isHolding) {
            started.set_value();
            release.get_future().wait();
        }
        return inner_.setDisplayEnabled(display, enabled);
    }

    std::atomic<bool> isHolding = true;
    std::promise<void> started;
    std::promise<void> release;

private:
    DisplaySwitch& inner_;
};

[[noreturn]] void hang() {
    for (;;) {
        std::this_thread::sleep_for(1h);
    }
}

class QuitSequenceTest : public testing::Test {
protected:
    static constexpr DisplayID external = 1;

    QuitSequenceTest() {
        system.windowServer.connect({.id = external});
        DisplayRegistry::merge({external}, system.userDefaults, *system.windowServer.now(),
                               system.wallClock);
    }

    /// A helper that hears of all, and for whom nothing is left.
    QuitHelp help() {
        return {.handOver = [this](const auto& displays) { handedOver = displays; },
                .isHandedOver = [this] { return hasHelper; },
                .changesEnded = [this] { return changesEnded.load(); },
                .finish = [this] { ++finished; }};
    }

    SimulatedPlatform system;
    std::vector<DisplayID> handedOver;
    bool hasHelper = true;
    std::atomic<std::uint64_t> changesEnded = 0;
    int finished = 0;
};

TEST_F(QuitSequenceTest, DoesItsWorkOnceHoweverOftenItIsRun) {
    SwitchOffGate gate(system.windowServer);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);
    QuitSequence quit(delegate, gate, help());

    for (int asked = 0; asked < 3; ++asked) {
        system.windowServer.switchFromOutside(external, false);
        quit.run(1h);
    }

    EXPECT_EQ(system.windowServer.takeChanges().size(), 1U);
    EXPECT_EQ(finished, 1);
}

#ifdef __linux__
TEST_F(QuitSequenceTest, DoesItsWorkWhereNoThreadCanBeStarted) {
    const support::NoMoreThreads noMore;
    SwitchOffGate gate(system.windowServer);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);
    system.windowServer.switchFromOutside(external, false);

    QuitSequence(delegate, gate, help()).run(1h);

    EXPECT_TRUE(system.windowServer.find(external)->enabled);
    EXPECT_EQ(finished, 1);
}
#endif

TEST_F(QuitSequenceTest, HandsOverEveryRememberedDisplayThatIsNotActiveBeforeItDoesItsWork) {
    constexpr DisplayID unplugged = 7;
    system.windowServer.connect({.id = unplugged});
    system.windowServer.connect({.id = 9});
    DisplayRegistry::merge({external, unplugged, 9}, system.userDefaults,
                           *system.windowServer.now(), system.wallClock);
    system.windowServer.switchFromOutside(external, false);
    system.windowServer.disconnect(unplugged);
    HeldSwitch held(system.windowServer);
    SwitchOffGate gate(held);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);
    std::vector<DisplayID> handedOverBefore;
    std::thread releasing([&] {
        held.started.get_future().wait();
        handedOverBefore = handedOver;
        held.isHolding = false;
        held.release.set_value();
    });

    QuitSequence(delegate, gate, help()).run(1h);
    releasing.join();

    EXPECT_THAT(handedOverBefore, testing::UnorderedElementsAre(external, unplugged));
    EXPECT_TRUE(system.windowServer.find(external)->enabled);
}

TEST_F(QuitSequenceTest, ASwitchOffThatHangsKeepsNobodyFromComingBack) {
    constexpr DisplayID other = 2;
    system.windowServer.connect({.id = other});
    HeldSwitch held(system.windowServer);
    SwitchOffGate gate(held);
    std::thread switching([&] { gate.setDisplayEnabled(other, false); });
    held.started.get_future().wait();
    system.windowServer.switchFromOutside(external, false);
    AppDelegate delegate(system.platform(), system.hotKeys);

    QuitSequence(delegate, gate, help()).run(1h);

    EXPECT_TRUE(system.windowServer.find(external)->enabled);
    EXPECT_EQ(finished, 1);
    held.release.set_value();
    switching.join();
}

TEST_F(QuitSequenceTest, AfterItNoDisplayCanBeSwitchedOff) {
    SwitchOffGate gate(system.windowServer);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);

    QuitSequence(delegate, gate, help()).run(1h);

    EXPECT_EQ(gate.setDisplayEnabled(external, false), 1004);
    EXPECT_TRUE(system.windowServer.find(external)->enabled);
}

TEST_F(QuitSequenceTest, ASwitchInFlightIsAwaitedAndThenUndone) {
    HeldSwitch held(system.windowServer);
    SwitchOffGate gate(held);
    std::thread switching([&] { gate.setDisplayEnabled(external, false); });
    held.started.get_future().wait();
    // The delegate's own switches are not held.
    AppDelegate delegate(system.platform(), system.hotKeys);
    std::atomic<bool> isFinishing = false;
    QuitHelp noting = help();
    noting.finish = [&] { isFinishing = true; };
    std::thread releasing([&] {
        EXPECT_FALSE(support::waitUntil([&] { return isFinishing.load(); }, 100ms));
        held.release.set_value();
    });

    QuitSequence(delegate, gate, noting).run(1h);
    switching.join();
    releasing.join();

    EXPECT_TRUE(system.windowServer.find(external)->enabled);
    EXPECT_TRUE(isFinishing);
}

using QuitSequenceDeathTest = QuitSequenceTest;

TEST_F(QuitSequenceDeathTest, ACallThatHangsEndsTheProcessWellIfAHelperKnowsWhatIsLeft) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    system.windowServer.switchFromOutside(external, false);
    const auto quitWhileACallHangs = [&](std::chrono::milliseconds limit) {
        HeldSwitch held(system.windowServer);
        SwitchOffGate gate(held);
        AppDelegate delegate(system.platform().with(gate), system.hotKeys);
        QuitSequence(delegate, gate, help()).run(limit);
    };

    // Long enough to hand everything over before, on the busiest machine.
    EXPECT_EXIT(quitWhileACallHangs(1s), testing::ExitedWithCode(0), "");

    hasHelper = false;
    EXPECT_EXIT(quitWhileACallHangs(50ms), testing::ExitedWithCode(1), "");
}

TEST_F(QuitSequenceDeathTest, WhatCouldNotBeHandedOverIsNotTakenForDone) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto quitWhileHandingOverHangs = [&] {
        SwitchOffGate gate(system.windowServer);
        AppDelegate delegate(system.platform().with(gate), system.hotKeys);
        QuitHelp hanging = help();
        hanging.handOver = [](const auto&) { hang(); };
        QuitSequence(delegate, gate, hanging).run(50ms);
    };

    EXPECT_EXIT(quitWhileHandingOverHangs(), testing::ExitedWithCode(1), "");
}

TEST_F(QuitSequenceDeathTest, AProcessThatHangsAfterItEndsWellAndAsksNobody) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // What it would be asked may be gone by then.
    hasHelper = false;
    const auto quitAndHang = [&] {
        SwitchOffGate gate(system.windowServer);
        AppDelegate delegate(system.platform().with(gate), system.hotKeys);
        QuitSequence(delegate, gate, help()).run(1s);
        hang();
    };

    EXPECT_EXIT(quitAndHang(), testing::ExitedWithCode(0), "");
}

/// A switch that takes its time.
class SlowSwitch : public DisplaySwitch {
public:
    SlowSwitch(DisplaySwitch& inner, std::function<void()> takeTime)
        : inner_(inner), takeTime_(std::move(takeTime)) {}

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        takeTime_();
        return inner_.setDisplayEnabled(display, enabled);
    }

private:
    DisplaySwitch& inner_;
    std::function<void()> takeTime_;
};

/// The end of a process whose sequence came to its end, and was not cut short.
constexpr int cameToItsEnd = 42;

TEST_F(QuitSequenceDeathTest, AsLongAsThereIsProgressItGoesOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto quitWithProgress = [&] {
        SwitchOffGate gate(system.windowServer);
        AppDelegate delegate(system.platform().with(gate), system.hotKeys);
        QuitHelp slow = help();
        // Something has ended each time that is looked at; three times as often as it would take.
        std::atomic<std::uint64_t> looks = 0;
        slow.changesEnded = [&] { return ++looks; };
        slow.finish = [&] { support::waitUntil([&] { return looks > 60; }); };
        QuitSequence(delegate, gate, slow).run(40ms);
        std::_Exit(cameToItsEnd);
    };

    EXPECT_EXIT(quitWithProgress(), testing::ExitedWithCode(cameToItsEnd), "");
}

TEST_F(QuitSequenceDeathTest, EachOfItsCallsHasTheWholeTime) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto quitSlowly = [&] {
        // It is looked at twenty times before a call counts as hanging.
        std::atomic<int> looks = 0;
        const auto takeMoreThanHalfTheTime = [&](const auto&...) {
            const int enough = looks + 12;
            support::waitUntil([&] { return looks >= enough; });
        };
        system.windowServer.switchFromOutside(external, false);
        SlowSwitch slow(system.windowServer, takeMoreThanHalfTheTime);
        SwitchOffGate gate(slow);
        AppDelegate delegate(system.platform().with(gate), system.hotKeys);
        QuitSequence(delegate, gate,
                     {.handOver = takeMoreThanHalfTheTime,
                      .isHandedOver = [] { return true; },
                      .changesEnded = [&] { return ++looks, 0; },
                      .finish = takeMoreThanHalfTheTime})
            .run(1s);
        std::_Exit(cameToItsEnd);
    };

    EXPECT_EXIT(quitSlowly(), testing::ExitedWithCode(cameToItsEnd), "");
}

}  // namespace
}  // namespace tavrel
