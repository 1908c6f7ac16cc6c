#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/ServerProcess.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using std::chrono::steady_clock;
using support::VirtualDesktop;

void expectNothingKnown(X11WindowServer& server, DisplayID display) {
    // First of all: whether it can switch may still be answered by what it said a moment ago.
    const auto moment = server.now();
    EXPECT_FALSE(server.canSwitch());
    EXPECT_EQ(moment->allDisplays(), std::nullopt);
    EXPECT_EQ(server.setDisplayEnabled(display, true), serverStatus::notImplemented);
    EXPECT_EQ(server.setDisplayEnabled(display, false), serverStatus::notImplemented);
    EXPECT_FALSE(moment->isOnline(display));
    EXPECT_FALSE(moment->isActive(display));
    EXPECT_FALSE(moment->isBuiltIn(display));
    EXPECT_EQ(moment->vendorNumber(display), 0U);
    EXPECT_EQ(moment->modelNumber(display), 0U);
    EXPECT_EQ(moment->serialNumber(display), 0U);
}

void expectNothingButRefusals(X11WindowServer& server, DisplayID display) {
    expectNothingKnown(server, display);
    EXPECT_EQ(server.now()->onlineDisplays(), std::nullopt);
}

/// How long a hundred rounds of questions and requests take.
steady_clock::duration timeOfRefusals(X11WindowServer& server) {
    const auto begin = steady_clock::now();
    for (int i = 0; i < 100; ++i) {
        expectNothingButRefusals(server, 1);
    }
    return steady_clock::now() - begin;
}

class LostServerTest : public LiveServerTest {
protected:
    const DisplayID middle = idOf("DUMMY1");
};

TEST_F(LostServerTest, AKilledServerIsAStatus) {
    ASSERT_TRUE(server.now()->isActive(middle));
    ASSERT_EQ(server.setDisplayEnabled(middle, false), serverStatus::success);
    desktop.kill();
    expectNothingButRefusals(server, middle);
    EXPECT_TRUE(server.now()->isCurrent());
    EXPECT_LT(timeOfRefusals(server), std::chrono::seconds(20)) << "far less than one timeout each";
}

TEST_F(LostServerTest, AServerKilledInTheMiddleOfThingsIsAStatus) {
    std::atomic<bool> stop = false;
    std::atomic<int> rounds = 0;
    std::vector<std::thread> threads;
    for (const char* name : {"DUMMY0", "DUMMY1"}) {
        threads.emplace_back([&, display = idOf(name)] {
            for (bool on = false; !stop; on = !on, ++rounds) {
                const ServerStatus status = server.setDisplayEnabled(display, on);
                EXPECT_THAT(status,
                            testing::AnyOf(serverStatus::success, serverStatus::notImplemented));
                server.now()->isActive(display);
            }
        });
    }
    EXPECT_TRUE(support::waitUntil([&] { return rounds > 20; }));
    desktop.kill();
    EXPECT_TRUE(support::waitUntil([&] { return !server.canSwitch(); }));
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    expectNothingButRefusals(server, middle);
}

class SilentServerTest : public LostServerTest {
protected:
    static constexpr std::chrono::milliseconds timeout{500};

    X11WindowServer impatient{store, {.displayName = desktop.displayName(), .timeout = timeout}};
    ServerProcess process{desktop};
    const DisplayID left = idOf("DUMMY0");
};

TEST_F(SilentServerTest, ChangesNothingAndIsAnsweredForByWhatItSaidLast) {
    ASSERT_TRUE(support::waitUntil([&] {
        return impatient.setDisplayEnabled(middle, false) == serverStatus::success &&
               impatient.now()->isOnline(middle) && !impatient.now()->isActive(middle);
    }));
    process.pause();

    // Long enough for the connection to be given up, and for others to be tried.
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(impatient.setDisplayEnabled(middle, true), serverStatus::notImplemented);
        const auto moment = impatient.now();
        EXPECT_TRUE(impatient.canSwitch());
        EXPECT_FALSE(moment->isCurrent());
        EXPECT_THAT(moment->onlineDisplays(), testing::Optional(testing::SizeIs(3)));
        EXPECT_TRUE(moment->isActive(left));
        EXPECT_TRUE(moment->isOnline(middle));
        EXPECT_FALSE(moment->isActive(middle));
    }
}

TEST_F(SilentServerTest, IsUnknownToANewcomer) {
    process.pause();
    expectNothingButRefusals(impatient, middle);
    EXPECT_FALSE(impatient.now()->isCurrent()) << "it may have displays all the same";
}

TEST_F(SilentServerTest, IsHeardAgainWhenItGoesOn) {
    ASSERT_TRUE(support::waitUntil(
        [&] { return impatient.setDisplayEnabled(middle, false) == serverStatus::success; }));
    X11WindowServer newcomer(store, {.displayName = desktop.displayName(), .timeout = timeout});
    process.pause();
    EXPECT_EQ(newcomer.setDisplayEnabled(middle, true), serverStatus::notImplemented);
    EXPECT_EQ(impatient.setDisplayEnabled(middle, true), serverStatus::notImplemented);
    process.resume();

    for (X11WindowServer* each : {&impatient, &newcomer}) {
        EXPECT_TRUE(support::waitUntil([&] { return each->now()->isOnline(middle); }));
        EXPECT_TRUE(support::waitUntil(
            [&] { return each->setDisplayEnabled(middle, true) == serverStatus::success; }));
        EXPECT_TRUE(support::waitUntil([&] {
            const auto moment = each->now();
            return moment->isActive(middle) && moment->isCurrent();
        }));
    }
    EXPECT_TRUE(desktop.monitor("DUMMY1").on);
}

TEST_F(SilentServerTest, IsForgottenOnceItIsKnownToBeGone) {
    ASSERT_TRUE(support::waitUntil([&] { return impatient.now()->isActive(left); }));
    process.pause();
    ASSERT_TRUE(impatient.now()->isActive(left));
    desktop.kill();

    EXPECT_TRUE(support::waitUntil([&] { return !impatient.now()->isActive(left); }));
    expectNothingButRefusals(impatient, left);
}

TEST_F(SilentServerTest, KeepsNobodyWaitingTwice) {
    ASSERT_TRUE(server.now()->isActive(left));
    process.pause();
    constexpr int questions = 30;

    const auto begin = steady_clock::now();
    for (int i = 0; i < questions; ++i) {
        EXPECT_TRUE(server.now()->isActive(left));
    }

    EXPECT_LT(steady_clock::now() - begin,
              questions / 2 * layout::LastWord<x11::Word>::questionTimeout);
}

TEST(NoServerTest, IsAStatus) {
    SimulatedUserDefaults store;
    X11WindowServer server(store, {.displayName = ":4093"});
    expectNothingButRefusals(server, 1);
    EXPECT_LT(timeOfRefusals(server), std::chrono::seconds(20));
    EXPECT_EQ(store.writes(), 0U);
}

TEST(NoServerTest, ANonsensicalNameIsAStatus) {
    SimulatedUserDefaults store;
    for (const char* name : {"", "nonsense", ":0.99999", "::::", ":-1"}) {
        X11WindowServer server(store, {.displayName = name});
        expectNothingButRefusals(server, 1);
    }
}

TEST(NoRandrTest, IsAStatusAndAnEmptyOnlineList) {
    const VirtualDesktop desktop({.randr = false});
    SimulatedUserDefaults store;
    X11WindowServer server(store, {.displayName = desktop.displayName()});
    expectNothingKnown(server, 1);
    EXPECT_THAT(server.now()->onlineDisplays(), testing::Optional(testing::IsEmpty()));
}

}  // namespace
}  // namespace tavrel
