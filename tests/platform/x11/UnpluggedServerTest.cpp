#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel {
namespace {

using support::ScreenSize;

/// A real X server that drives a monitor which isn't connected. The dummy driver calls an output
/// connected only when it has been made to look after the output was first used; so nobody may
/// make it look meanwhile.
class UnpluggedServerTest : public LiveServerTest {
protected:
    void SetUp() override { ASSERT_NE(connection, nullptr); }

    /// From now on the server drives it, at the origin, and these no longer.
    void driveGhost(const std::string& mode, const std::vector<std::string>& alsoOff) {
        other.run({"--addmode", ghost, mode});
        std::vector<std::string> layout{"--output", ghost, "--mode", mode, "--pos", "0x0"};
        for (const std::string& name : alsoOff) {
            layout.insert(layout.end(), {"--output", name, "--off"});
        }
        other.run(std::move(layout));
        ASSERT_TRUE(isGhostDriven()) << "or there is nothing to be shown";
    }

    x11::Snapshot read() { return randr.read().value(); }

    bool isGhostDriven() {
        const x11::Snapshot now = read();
        const x11::Output& output = x11::outputNamed(now, ghost);
        return !output.connected && now.activeCrtc(output) != nullptr;
    }

    ServerStatus switchOn(const std::string& name) {
        return x11::switchDisplay(randr, remembered, lastSeen, idOf(name), true);
    }

    const std::string ghost = "DUMMY3";
    std::unique_ptr<x11::Connection> connection =
        x11::Connection::connect({.displayName = desktop.displayName()});
    x11::RandrLayoutServer randr{*connection, x11::Probing::never};
    layout::RememberedOutputs remembered{store};
    layout::LastSeen lastSeen;
};

TEST_F(UnpluggedServerTest, ADisplayComesOnAtTheOriginAndNotBesideADesktopNobodySees) {
    driveGhost("2048x1536", {"DUMMY0", "DUMMY1", "DUMMY2"});
    ASSERT_EQ(desktop.screenSize(), (ScreenSize{2048, 1536}));

    ASSERT_EQ(switchOn("DUMMY1"), serverStatus::success);

    EXPECT_EQ(desktop.monitor("DUMMY1").x, 0);
    EXPECT_EQ(desktop.monitor("DUMMY1").y, 0);
    EXPECT_EQ(desktop.screenSize(), (ScreenSize{1920, 1080}));
    EXPECT_FALSE(isGhostDriven()) << "it would not fit any more";
}

TEST_F(UnpluggedServerTest, TheLastConnectedDisplayStaysThoughAnotherIsDriven) {
    driveGhost("1920x1080", {"DUMMY1", "DUMMY2"});

    EXPECT_EQ(x11::switchDisplay(randr, remembered, lastSeen, idOf("DUMMY0"), false),
              serverStatus::cannotComplete);

    EXPECT_TRUE(desktop.monitor("DUMMY0").on);
}

TEST_F(UnpluggedServerTest, ARememberedPlaceIsFreeThoughAMonitorThatHasGoneIsDrivenThere) {
    const support::Monitor was = desktop.monitor("DUMMY0");
    ASSERT_EQ(x11::switchDisplay(randr, remembered, lastSeen, idOf("DUMMY0"), false),
              serverStatus::success);
    driveGhost("1920x1080", {"DUMMY1"});

    ASSERT_EQ(switchOn("DUMMY0"), serverStatus::success);

    EXPECT_EQ(desktop.monitor("DUMMY0"), was);
}

}  // namespace
}  // namespace tavrel
