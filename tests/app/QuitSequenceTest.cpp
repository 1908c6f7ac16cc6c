#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/QuitSequence.h"
#include "registry/DisplayRegistry.h"
#include "tests/simulated/SimulatedPlatform.h"

namespace tavrel {
namespace {

using namespace std::chrono_literals;

/// A switch that blocks at a request until it is released.
class HeldSwitch : public DisplaySwitch {
public:
    explicit HeldSwitch(DisplaySwitch& inner) : inner_(inner) {}

    bool canSwitch() override { return true; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        started.set_value();
        release.get_future().wait();
        return inner_.setDisplayEnabled(display, enabled);
    }

    std::promise<void> started;
    std::promise<void> release;

private:
    DisplaySwitch& inner_;
};

class QuitSequenceTest : public testing::Test {
protected:
    static constexpr DisplayID external = 1;

    QuitSequenceTest() {
        system.windowServer.connect({.id = external});
        DisplayRegistry::merge({external}, system.userDefaults, *system.windowServer.now(),
                               system.wallClock);
    }

    SimulatedPlatform system;
};

TEST_F(QuitSequenceTest, DoesItsWorkOnceHoweverOftenItIsRun) {
    SwitchOffGate gate(system.windowServer);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);
    QuitSequence quit(delegate, gate);

    for (int asked = 0; asked < 3; ++asked) {
        system.windowServer.switchFromOutside(external, false);
        quit.run(1h);
    }

    EXPECT_EQ(system.windowServer.takeChanges().size(), 1U);
}

TEST_F(QuitSequenceTest, AfterItNoDisplayCanBeSwitchedOff) {
    SwitchOffGate gate(system.windowServer);
    AppDelegate delegate(system.platform().with(gate), system.hotKeys);

    QuitSequence(delegate, gate).run(1h);

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
    QuitSequence quit(delegate, gate);

    std::thread releasing([&] { held.release.set_value(); });
    quit.run(1h);
    switching.join();
    releasing.join();

    EXPECT_TRUE(system.windowServer.find(external)->enabled);
}

using QuitSequenceDeathTest = QuitSequenceTest;

TEST_F(QuitSequenceDeathTest, AServerThatNeverAnswersDoesNotKeepTheProcessFromEnding) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            HeldSwitch held(system.windowServer);
            SwitchOffGate gate(held);
            std::thread([&] { gate.setDisplayEnabled(external, false); }).detach();
            held.started.get_future().wait();
            AppDelegate delegate(system.platform().with(gate), system.hotKeys);
            QuitSequence(delegate, gate).run(50ms);
        },
        testing::ExitedWithCode(1), "");
}

}  // namespace
}  // namespace tavrel
