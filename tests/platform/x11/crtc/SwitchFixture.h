#pragma once

#include <gmock/gmock.h>

#include <string>

#include "platform/layout/RememberedOutputs.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "tests/platform/x11/crtc/SimulatedRandr.h"
#include "tests/platform/x11/snapshot/SnapshotBuilder.h"
#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::x11 {

using layout::Area;

/// Switches displays of a simulated server, one built by the test.
class SwitchFixture : public testing::Test {
protected:
    void start(const SnapshotBuilder& builder) { server = SimulatedRandr(builder.build()); }

    ServerStatus off(const std::string& name) { return switchTo(name, false); }
    ServerStatus on(const std::string& name) { return switchTo(name, true); }

    /// Switches off and on again; afterwards all must be as it was.
    void expectRoundTrip(const std::string& name) {
        const Snapshot before = server.state;
        ASSERT_EQ(off(name), serverStatus::success);
        EXPECT_EQ(areaOf(server.state, name), std::nullopt);
        ASSERT_EQ(on(name), serverStatus::success);
        EXPECT_EQ(server.state, before);
    }

    /// Another program switches it off.
    void offFromOutside(const std::string& name) {
        const Xid crtc = outputNamed(server.state, name).crtc;
        server.grab();
        ASSERT_TRUE(server.setCrtc({.crtc = crtc}, server.state.configTimestamp));
        server.ungrab();
    }

    /// From now on asks the server through this.
    void use(LayoutServer& decorator) { asked_ = &decorator; }

    SimulatedRandr server{SnapshotBuilder().build()};
    SimulatedUserDefaults store;
    layout::RememberedOutputs remembered{store};
    layout::LastSeen lastSeen;

private:
    LayoutServer* asked_ = &server;

    ServerStatus switchTo(const std::string& name, bool enabled) {
        return switchDisplay(*asked_, remembered, lastSeen, displayNamed(server.state, name),
                             enabled);
    }
};

/// A and B and C, side by side, A primary.
inline SnapshotBuilder threeInARow() {
    SnapshotBuilder builder;
    builder.output("A").on(0, 0).output("B").on(1920, 0).output("C").on(3840, 0);
    return builder;
}

}  // namespace tavrel::x11
