#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/crtc/FaultyLayoutServer.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel {
namespace {

using x11::CrtcSetting;
using x11::Xid;

/// A real X server whose driver refuses what a wire or a graphics card may refuse, or changes
/// something by itself.
class RefusingDriverTest : public LiveServerTest {
protected:
    void SetUp() override { ASSERT_NE(connection, nullptr); }

    x11::Snapshot read() { return randr.read().value(); }

    ServerStatus set(const std::string& name, bool enabled) {
        return x11::switchDisplay(faulty, remembered, lastSeen, idOf(name), enabled);
    }

    std::unique_ptr<x11::Connection> connection =
        x11::Connection::connect({.displayName = desktop.displayName()});
    x11::RandrLayoutServer randr{*connection};
    x11::FaultyLayoutServer faulty{randr};
    layout::RememberedOutputs remembered{store};
    layout::LastSeen lastSeen;
};

TEST_F(RefusingDriverTest, WithNothingToBeSeenOneModeAfterTheOtherIsTried) {
    other.switchOff({"DUMMY0", "DUMMY1", "DUMMY2"});
    const x11::Snapshot before = read();
    const std::vector<Xid> modes = x11::outputNamed(before, "DUMMY1").modes;
    ASSERT_GT(modes.size(), 12U);
    const auto firstTaken = modes.begin() + 12;
    faulty.refuses = [&](const CrtcSetting& setting) {
        return std::find(modes.begin(), firstTaken, setting.mode) != firstTaken;
    };

    ASSERT_EQ(set("DUMMY1", true), serverStatus::success);

    const layout::Mode& taken = before.mode(*firstTaken)->description;
    const support::Monitor monitor = desktop.monitor("DUMMY1");
    EXPECT_EQ(monitor.width, taken.width);
    EXPECT_EQ(monitor.height, taken.height);
    EXPECT_EQ(desktop.screenSize(), (support::ScreenSize{taken.width, taken.height}));
}

TEST_F(RefusingDriverTest, WhereEveryModeIsRefusedTheServerIsAsBeforeAndFree) {
    other.switchOff("DUMMY2");
    const std::vector<support::Monitor> before = desktop.monitors();
    const support::ScreenSize screen = desktop.screenSize();
    faulty.refuses = [](const CrtcSetting&) { return true; };

    EXPECT_EQ(set("DUMMY2", true), serverStatus::cannotComplete);

    EXPECT_EQ(desktop.monitors(), before);
    EXPECT_EQ(desktop.screenSize(), screen);
}

TEST_F(RefusingDriverTest, ADisplayThatGoesAtTheSameMomentDoesNotTakeTheOtherWithIt) {
    const support::Monitor was = desktop.monitor("DUMMY0");
    ASSERT_EQ(set("DUMMY0", false), serverStatus::success);
    int attempts = 0;
    faulty.afterNextCrtc = [&] {
        ++attempts;
        const x11::Snapshot now = read();
        EXPECT_TRUE(
            randr.setCrtc({.crtc = x11::outputNamed(now, "DUMMY2").crtc}, now.configTimestamp));
    };
    faulty.refuses = [&](const CrtcSetting&) { return attempts > 0; };

    EXPECT_EQ(set("DUMMY0", true), serverStatus::success);

    EXPECT_EQ(desktop.monitor("DUMMY0"), was);
    EXPECT_FALSE(desktop.monitor("DUMMY2").on);
}

}  // namespace
}  // namespace tavrel
