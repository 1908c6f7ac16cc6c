#include <gmock/gmock.h>

#include <optional>

#include "platform/layout/RememberedOutputs.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/support/MonitorFacts.h"

namespace tavrel {
namespace {

using support::Monitor;
using support::MonitorFacts;
using testing::Contains;
using testing::Not;

/// Monitors that say who they are, at the ports of a real X server.
class MovedMonitorTest : public LiveServerTest {
protected:
    void plug(const MonitorFacts& facts, const std::string& port) {
        support::showEdid(desktop.displayName(), port, facts);
    }
    void unplug(const std::string& port) {
        support::showEdid(desktop.displayName(), port, std::nullopt);
    }
    void move(const MonitorFacts& facts, const std::string& from, const std::string& to) {
        unplug(from);
        plug(facts, to);
    }

    /// The one display that `after` has and `before` has not.
    static DisplayID newIn(const std::vector<DisplayID>& after,
                           const std::vector<DisplayID>& before) {
        const auto found = std::find_if(after.begin(), after.end(), [&](DisplayID each) {
            return std::find(before.begin(), before.end(), each) == before.end();
        });
        return found == after.end() ? 0 : *found;
    }
    DisplayID plugged(const MonitorFacts& facts, const std::string& port) {
        const std::vector<DisplayID> before = displayList();
        plug(facts, port);
        return newIn(displayList(), before);
    }

    X11WindowServer anotherProcess() {
        return X11WindowServer(store, {.displayName = desktop.displayName()});
    }

    const MonitorFacts monitor{.serial = 7};
};

TEST_F(MovedMonitorTest, OnAnotherPortItIsTheSameDisplay) {
    const DisplayID display = plugged(monitor, "DUMMY1");
    ASSERT_NE(display, 0U);

    move(monitor, "DUMMY1", "DUMMY2");

    EXPECT_TRUE(server.now()->isOnline(display));
    EXPECT_EQ(server.now()->serialNumber(display), 7U);
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
    EXPECT_FALSE(desktop.monitor("DUMMY2").on);
    EXPECT_TRUE(desktop.monitor("DUMMY1").on);
}

TEST_F(MovedMonitorTest, SwitchedOffAtOnePortItComesOnAsItWasAtAnother) {
    const DisplayID display = plugged(monitor, "DUMMY1");
    other.run({"--output", "DUMMY1", "--mode", "1280x1024", "--pos", "1920x56"});
    ASSERT_EQ(server.setDisplayEnabled(display, false), serverStatus::success);
    other.switchOff("DUMMY2");

    move(monitor, "DUMMY1", "DUMMY2");
    ASSERT_EQ(anotherProcess().setDisplayEnabled(display, true), serverStatus::success);

    const Monitor now = desktop.monitor("DUMMY2");
    EXPECT_EQ(now.width, 1280);
    EXPECT_EQ(now.x, 1920);
    EXPECT_EQ(now.y, 56);
    EXPECT_EQ(layout::RememberedOutputs(store).all(), layout::Memory{}) << "nothing left over";
}

TEST_F(MovedMonitorTest, AnotherProcessCallsItTheSame) {
    const DisplayID display = plugged(monitor, "DUMMY1");
    move(monitor, "DUMMY1", "DUMMY2");

    X11WindowServer helper = anotherProcess();

    EXPECT_TRUE(helper.now()->isOnline(display));
    EXPECT_EQ(helper.now()->allDisplays(), server.now()->allDisplays());
}

TEST_F(MovedMonitorTest, ItKeepsItsNumberWhileItsTwinComesAndGoes) {
    const DisplayID display = plugged(monitor, "DUMMY1");
    ASSERT_THAT(displayList(), Contains(display));
    move(monitor, "DUMMY1", "DUMMY2");
    ASSERT_THAT(displayList(), Contains(display));

    const DisplayID twin = plugged(monitor, "DUMMY1");
    EXPECT_NE(twin, 0U);
    EXPECT_THAT(displayList(), Contains(display));
    EXPECT_EQ(anotherProcess().now()->allDisplays(), displayList());

    unplug("DUMMY2");
    EXPECT_THAT(displayList(), Contains(twin));
    EXPECT_THAT(displayList(), Not(Contains(display)));
    ASSERT_EQ(anotherProcess().setDisplayEnabled(twin, false), serverStatus::success);
    EXPECT_FALSE(desktop.monitor("DUMMY1").on);
}

TEST_F(MovedMonitorTest, ItIsCalledByItsMakerItsModelAndItsPort) {
    const DisplayID display = plugged({.product = 0x1234, .name = "27U"}, "DUMMY1");

    EXPECT_EQ(server.now()->hardware(display), (DisplayHardware{"ACM 27U", "DUMMY1"}));
    EXPECT_EQ(server.now()->hardware(idOf("DUMMY2")), (DisplayHardware{"", "DUMMY2"}));
    EXPECT_EQ(server.now()->hardware(12345), DisplayHardware());
}

TEST_F(MovedMonitorTest, AMonitorStoredByVersion01IsStillTheSame) {
    // The number that version gave, and its record of the monitor, switched off.
    plug(monitor, "DUMMY1");
    const DisplayID old = layout::stableHash("DUMMY1/1133/1/7");
    layout::RememberedOutputs(store).update([&](layout::Memory memory) {
        memory.push_back({.display = old});
        return memory;
    });

    EXPECT_THAT(displayList(), Contains(old));
    move(monitor, "DUMMY1", "DUMMY2");

    EXPECT_THAT(displayList(), Contains(old));
    ASSERT_EQ(server.setDisplayEnabled(old, false), serverStatus::success);
    EXPECT_FALSE(desktop.monitor("DUMMY2").on);
}

}  // namespace
}  // namespace tavrel
