#include <gmock/gmock.h>

#include <atomic>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "platform/x11/crtc/RandrLayoutServer.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel {
namespace {

/// Several programs, and several threads of ours, at one server.
class SharedServerTest : public LiveServerTest {
protected:
    /// Beside a program that changes DUMMY2. It may end in the middle of that, with DUMMY2 off;
    /// what is the last one then stays on.
    void switchBesideAnother(const char* name, bool on) {
        const ServerStatus status = server.setDisplayEnabled(idOf(name), on);
        if (on || status == serverStatus::success) {
            EXPECT_EQ(status, serverStatus::success) << name;
            return;
        }
        EXPECT_EQ(status, serverStatus::cannotComplete) << name;
        EXPECT_FALSE(desktop.monitor("DUMMY2").on) << name << " was not the last one";
        EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY2"), true), serverStatus::success);
    }
};

/// What matters of a layout: what each output shows, the screen, the primary.
std::string describe(const x11::Snapshot& snapshot) {
    std::ostringstream text;
    x11::PrintTo(snapshot, &text);
    return text.str();
}

TEST_F(SharedServerTest, AnotherClientNeverSeesHalfAChange) {
    const DisplayID display = idOf("DUMMY0");
    const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});
    ASSERT_NE(connection, nullptr);
    x11::RandrLayoutServer observer(*connection);
    const auto look = [&] {
        // With the server to itself, what it reads is one moment's.
        observer.grab();
        const auto seen = observer.read();
        observer.ungrab();
        return seen.has_value() ? describe(*seen) : "nothing";
    };
    const std::string on = look();
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
    const std::string off = look();
    ASSERT_NE(on, off);

    std::atomic<bool> stop = false;
    std::atomic<int> changes = 0;
    std::thread switcher([&] {
        for (bool enabled = true; !stop; enabled = !enabled, ++changes) {
            EXPECT_EQ(server.setDisplayEnabled(display, enabled), serverStatus::success);
        }
    });
    // Each look falls into a change, since one follows the other. Which of the two states it finds
    // is up to the server's turns, so neither is counted; and however slow the machine, as many
    // looks and changes are made.
    constexpr int enough = 100;
    for (int looks = 0; !HasFailure() && (looks < enough || changes < enough); ++looks) {
        EXPECT_THAT(look(), testing::AnyOf(on, off));
    }
    stop = true;
    switcher.join();
}

TEST_F(SharedServerTest, AQuestionWaitsForAnotherClientsGrabAndIsAnswered) {
    const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});
    ASSERT_NE(connection, nullptr);
    ASSERT_TRUE(server.now()->isActive(idOf("DUMMY0")));
    x11::RandrLayoutServer holder(*connection);
    ASSERT_TRUE(holder.grab());
    ASSERT_TRUE(holder.read().has_value());
    std::atomic<bool> answered = false;
    std::thread asker([&] {
        EXPECT_TRUE(server.now()->isActive(idOf("DUMMY0")));
        answered = true;
    });
    // A moment shows an answer that does not wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(answered);
    holder.ungrab();
    asker.join();
}

TEST_F(SharedServerTest, ManyThreadsMaySwitchAndAsk) {
    const std::vector<support::Monitor> before = desktop.monitors();
    X11WindowServer second(store, {.displayName = desktop.displayName()});
    std::vector<std::thread> threads;
    // One stays on: the last would be refused.
    for (const char* name : {"DUMMY0", "DUMMY1"}) {
        threads.emplace_back([&, display = idOf(name)] {
            for (int i = 0; i < 20; ++i) {
                EXPECT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
                EXPECT_FALSE(server.now()->isActive(display));
                EXPECT_EQ(server.setDisplayEnabled(display, true), serverStatus::success);
                EXPECT_TRUE(server.now()->isActive(display));
                EXPECT_TRUE(second.now()->isActive(display));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(desktop.monitors(), before);
}

TEST_F(SharedServerTest, RacesWithAnotherProgramLeaveASoundLayout) {
    std::atomic<bool> stop = false;
    std::atomic<int> changes = 0;
    std::thread program([&] {
        while (!stop) {
            try {
                other.setPosition("DUMMY2", 3840, changes % 2 == 0 ? 200 : 0);
            } catch (const std::runtime_error&) {
                // It decides by what it saw before it had the server to itself.
            }
            ++changes;
        }
    });
    constexpr int enough = 40;
    for (bool on = false; !HasFailure() && changes <= enough; on = !on) {
        switchBesideAnother("DUMMY0", on);
        switchBesideAnother("DUMMY1", on);
    }
    stop = true;
    program.join();
    for (const char* name : {"DUMMY0", "DUMMY1", "DUMMY2"}) {
        EXPECT_EQ(server.setDisplayEnabled(idOf(name), true), serverStatus::success);
        const support::Monitor monitor = desktop.monitor(name);
        EXPECT_TRUE(monitor.on);
        EXPECT_GE(desktop.screenSize().width, monitor.x + monitor.width);
        EXPECT_GE(desktop.screenSize().height, monitor.y + monitor.height);
    }
}

}  // namespace
}  // namespace tavrel
