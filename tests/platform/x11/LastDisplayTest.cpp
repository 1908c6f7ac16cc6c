#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/posix/WakeUp.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "tests/platform/posix/ForkedProcess.h"
#include "tests/platform/x11/LiveServerTest.h"
#include "tests/platform/x11/crtc/FaultyLayoutServer.h"

namespace tavrel {
namespace {

using testing::UnorderedElementsAre;

/// Several hands reach for the last display of a real X server at the same time.
class LastDisplayTest : public LiveServerTest {
protected:
    LastDisplayTest() : LiveServerTest({.monitors = 2}) {}

    /// Switches it off over a connection of its own; just before it has the server to itself,
    /// somebody else does something.
    ServerStatus offWithOthersBetween(const std::string& name, std::function<void()> others) {
        const auto connection = x11::Connection::connect({.displayName = desktop.displayName()});
        x11::RandrLayoutServer randr(*connection);
        x11::FaultyLayoutServer slow(randr);
        slow.beforeGrab = std::move(others);
        layout::RememberedOutputs remembered(store);
        layout::LastSeen lastSeen;
        return x11::switchDisplay(slow, remembered, lastSeen, idOf(name), false);
    }

    /// A process of its own that switches the display off when it is told to go.
    ForkedProcess switchingOff(const std::string& name, const FileDescriptor& go) {
        return ForkedProcess([this, name, &go] {
            SimulatedUserDefaults ownStore;
            X11WindowServer ownServer(ownStore, {.displayName = desktop.displayName()});
            ownServer.canSwitch();
            char signal = 0;
            (void)!::read(go.number(), &signal, 1);
            return ownServer.setDisplayEnabled(idOf(name), false) == serverStatus::success ? 0 : 4;
        });
    }
};

TEST_F(LastDisplayTest, StaysWhenAnotherProgramSwitchesTheOtherOffInBetween) {
    const ServerStatus status =
        offWithOthersBetween("DUMMY0", [this] { other.switchOff("DUMMY1"); });

    EXPECT_EQ(status, serverStatus::cannotComplete);
    EXPECT_TRUE(desktop.monitor("DUMMY0").on);
    EXPECT_EQ(store.data(layout::rememberedOutputsKey), "[]") << "nothing to bring back";
}

TEST_F(LastDisplayTest, StaysWhenASecondSwitchOvertakesTheFirst) {
    const ServerStatus first = offWithOthersBetween("DUMMY0", [this] {
        EXPECT_EQ(server.setDisplayEnabled(idOf("DUMMY1"), false), serverStatus::success);
    });

    EXPECT_EQ(first, serverStatus::cannotComplete);
    EXPECT_TRUE(desktop.monitor("DUMMY0").on);
}

TEST_F(LastDisplayTest, StaysWhenTwoProcessesSwitchOffOneEachAtTheSameMoment) {
    for (int round = 0; round < 10; ++round) {
        Pipe go;
        ForkedProcess first = switchingOff("DUMMY0", go.readEnd);
        ForkedProcess second = switchingOff("DUMMY1", go.readEnd);

        ASSERT_EQ(::write(go.writeEnd.number(), "go", 2), 2);

        EXPECT_THAT((std::vector{first.wait(), second.wait()}), UnorderedElementsAre(0, 4));
        EXPECT_EQ(desktop.monitorsOn(), 1);
        for (const char* name : {"DUMMY0", "DUMMY1"}) {
            ASSERT_EQ(server.setDisplayEnabled(idOf(name), true), serverStatus::success);
        }
    }
}

}  // namespace
}  // namespace tavrel
