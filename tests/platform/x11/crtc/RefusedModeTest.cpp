#include <set>

#include "tests/platform/x11/crtc/FaultyLayoutServer.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

/// Switching on with a driver that refuses much, and with others who change something.
class RefusedModeTest : public SwitchFixture {
protected:
    RefusedModeTest() { use(faulty); }

    void refuseModes(const std::set<Xid>& modes) {
        faulty.refuses = [modes](const CrtcSetting& setting) {
            return modes.count(setting.mode) != 0;
        };
    }

    Crtc& crtcOf(const std::string& name) {
        const Xid id = outputNamed(server.state, name).crtc;
        for (Crtc& crtc : server.state.crtcs) {
            if (crtc.id == id) {
                return crtc;
            }
        }
        throw std::out_of_range(name);
    }

    FaultyLayoutServer faulty{server};
};

TEST_F(RefusedModeTest, WhenThePreferredModeIsRefusedTheNextOnesAreTried) {
    start(SnapshotBuilder().output("A").modes({mode::huge, mode::fullHd, mode::small}));
    refuseModes({mode::huge, mode::fullHd});

    ASSERT_EQ(on("A"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1280, 1024}));
    EXPECT_EQ(server.state.screen, (ScreenSize{1280, 1024, 320, 256}));
}

TEST_F(RefusedModeTest, BesideAnotherDisplayTheyAreTriedToo) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").modes({mode::huge, mode::small}));
    refuseModes({mode::huge});

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1280, 1024}));
}

TEST_F(RefusedModeTest, OthersAreServedBetweenTwoAttempts) {
    start(SnapshotBuilder().output("A").modes({mode::huge, mode::fullHd, mode::small}));
    refuseModes({mode::huge, mode::fullHd});

    ASSERT_EQ(on("A"), serverStatus::success);

    EXPECT_EQ(server.grabs, 3);
    EXPECT_FALSE(server.isGrabbed);
}

TEST_F(RefusedModeTest, WhenNothingIsShownAnyCrtcWillDo) {
    start(SnapshotBuilder().output("A").output("B").output("C").crtcsOf({"A", "B", "C"}));
    const Xid last = outputNamed(server.state, "C").crtcs.back();
    faulty.refuses = [last](const CrtcSetting& setting) {
        return setting.crtc != last || setting.mode != mode::small;
    };

    ASSERT_EQ(on("C"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "C"), (Area{0, 0, 1280, 1024}));
    EXPECT_EQ(outputNamed(server.state, "C").crtc, last);
}

TEST_F(RefusedModeTest, WhenEveryWayIsRefusedAllIsAsItWasAndItEnds) {
    start(SnapshotBuilder().output("A").output("B"));
    const Snapshot before = server.state;
    faulty.refuses = [](const CrtcSetting&) { return true; };

    EXPECT_EQ(on("A"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(faulty.refused, 2) << "two modes, one CRTC";
    EXPECT_EQ(server.grabs, 2);
    EXPECT_FALSE(server.isGrabbed);
}

TEST_F(RefusedModeTest, OfVeryManyWaysTheFirstAreTried) {
    start(SnapshotBuilder().output("A"));
    server.state.outputs[0].modes.clear();
    for (Xid id = 2000; id < 2100; ++id) {
        Mode mode = *server.state.mode(mode::fullHd);
        mode.id = id;
        mode.description.refreshMillihertz += static_cast<int>(id);
        server.state.modes.push_back(mode);
        server.state.outputs[0].modes.push_back(id);
    }
    faulty.refuses = [](const CrtcSetting&) { return true; };

    EXPECT_EQ(on("A"), serverStatus::cannotComplete);

    EXPECT_EQ(faulty.refused, 64);
}

TEST_F(RefusedModeTest, WhereFewerWaysAreLeftThanWereTriedItEnds) {
    start(SnapshotBuilder().output("A").modes({mode::huge, mode::fullHd, mode::small}));
    refuseModes({mode::huge});
    server.beforeGrab = [this] {
        if (server.grabs > 0) {
            server.state.outputs[0].modes = {mode::huge};
        }
    };

    EXPECT_EQ(on("A"), serverStatus::cannotComplete);

    EXPECT_EQ(areaOf(server.state, "A"), std::nullopt);
    EXPECT_EQ(server.grabs, 2);
}

TEST_F(RefusedModeTest, AServerThatGoesAwayIsNotAskedOnAndOn) {
    start(SnapshotBuilder().output("A").modes({mode::huge, mode::fullHd, mode::small}));
    faulty.refuses = [this](const CrtcSetting&) { return server.isGone = true; };

    EXPECT_EQ(on("A"), serverStatus::notImplemented);

    EXPECT_EQ(faulty.refused, 1);
}

TEST_F(RefusedModeTest, AChangeElsewhereAtTheSameMomentIsNoReasonToSwitchItOffAgain) {
    start(threeInARow());
    ASSERT_EQ(off("B"), serverStatus::success);
    server.grabs = 0;
    faulty.afterNextCrtc = [this] {
        // The monitor of C was pulled, and the driver has switched its CRTC off.
        server.state.outputs[2].connected = false;
        Crtc& crtc = crtcOf("C");
        server.state.outputs[2].crtc = 0;
        crtc.mode = 0;
        crtc.area = {};
        crtc.outputs.clear();
    };

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(server.grabs, 1) << "and that at once";
}

TEST_F(RefusedModeTest, ACloneThatGoesAtTheSameMomentIsNoReasonEither) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").clones("A").output("C").on(1920, 0));
    ASSERT_EQ(off("B"), serverStatus::success);
    // It can only share.
    server.state.outputs[1].crtcs = {outputNamed(server.state, "A").crtc};
    server.grabs = 0;
    faulty.afterNextCrtc = [this] {
        server.state.outputs[0].connected = false;
        server.state.outputs[0].crtc = 0;
        std::erase(crtcOf("B").outputs, server.state.outputs[0].id);
    };

    EXPECT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(server.grabs, 1) << "and that at once";
}

TEST_F(RefusedModeTest, AChangeElsewhereAtTheSameMomentUndoesASwitchOff) {
    start(threeInARow());
    // What is left is pulled while B goes off.
    int readings = 0;
    server.beforeReading = [&](Snapshot& state) {
        if (++readings == 3) {
            state.outputs[0].connected = false;
            state.outputs[2].connected = false;
            state.screen.height = 1200;
        }
    };

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(RefusedModeTest, WhatComesLastIsNoReasonToSwitchItOffAgain) {
    start(SnapshotBuilder().output("A").on(0, 0).primary().output("B").on(1920, 0));
    ASSERT_EQ(off("A"), serverStatus::success);
    faulty.refusesPrimary = true;

    EXPECT_EQ(on("A"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(primaryOf(server.state), "B");
}

TEST_F(RefusedModeTest, WhereNothingWasSeenAnyLightIsKept) {
    start(SnapshotBuilder().output("A").output("B"));
    faulty.afterNextCrtc = [this] { crtcOf("A").area.x = 7; };

    EXPECT_EQ(on("A"), serverStatus::success);

    EXPECT_NE(areaOf(server.state, "A"), std::nullopt);
    EXPECT_EQ(server.grabs, 1) << "and that at once";
}

TEST_F(RefusedModeTest, BesideAnotherDisplayItIsToBeAsAsked) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").modes({mode::fullHd}));
    const Snapshot before = server.state;
    faulty.afterNextCrtc = [this] { crtcOf("B").area.x = 7; };

    EXPECT_EQ(on("B"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
}

}  // namespace
}  // namespace tavrel::x11
