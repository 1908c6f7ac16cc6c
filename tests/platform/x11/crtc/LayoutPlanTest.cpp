#include "platform/x11/crtc/LayoutPlan.h"

#include <algorithm>
#include <utility>

#include "tests/platform/x11/crtc/FaultyLayoutServer.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

TEST(CrtcSettingTest, OfACrtcThatIsOffNamesNothingElse) {
    Crtc contradictory;
    contradictory.id = 5;
    contradictory.area = {1, 2, 3, 4};
    contradictory.rotation = layout::rotate90;
    contradictory.outputs = {7};

    EXPECT_EQ(settingOf(contradictory), CrtcSetting{.crtc = 5});
}

/// Plans that come to nothing; afterwards all is as it was, by no more requests than it takes.
class LayoutPlanTest : public SwitchFixture {
protected:
    /// Whenever the server is read, it shows the output a little left of where it was put.
    void misplace(const std::string& name) {
        server.beforeReading = [name](Snapshot& state) {
            for (Crtc& crtc : state.crtcs) {
                if (crtc.id == outputNamed(state, name).crtc) {
                    crtc.area.x -= 7;
                }
            }
        };
    }

    void unplug(const std::string& name) {
        for (Output& output : server.state.outputs) {
            output.connected = output.connected && output.name != name;
        }
    }
};

TEST_F(LayoutPlanTest, OneThatStaysOnThoughTheServerSaysItIsOffHasNotGoneOff) {
    start(threeInARow());
    server.ignoresCrtcs = true;

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);
}

TEST_F(LayoutPlanTest, OneThatWentOffInVainIsSwitchedOnOnce) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0));
    const Snapshot before = server.state;
    server.firstRefusal = 2;
    server.refusals = 1;

    EXPECT_EQ(off("B"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 3) << "the CRTC, the screen, and the CRTC as it was";
}

TEST_F(LayoutPlanTest, OneThatCameOnInVainIsSwitchedOffOnce) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").modes({mode::fullHd}));
    const Snapshot before = server.state;
    misplace("B");

    EXPECT_EQ(on("B"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 4) << "screen and CRTC, and both as they were";
}

TEST_F(LayoutPlanTest, OneThatWasMovedInVainIsPutBackOnce) {
    start(SnapshotBuilder()
              .output("A")
              .on(0, 0)
              .output("spare")
              .disconnected()
              .output("panel")
              .modes({mode::fullHd})
              .crtcsOf({"A"}));
    const Snapshot before = server.state;
    const Xid external = outputNamed(before, "A").id;
    server.state.outputs[0].crtcs.push_back(outputNamed(before, "spare").crtcs.front());
    FaultyLayoutServer faulty(server);
    int timesSet = 0;
    faulty.refuses = [&](const CrtcSetting& setting) {
        timesSet += setting.outputs.front() == external ? 1 : 0;
        return setting.outputs.front() != external;
    };
    use(faulty);

    EXPECT_EQ(on("panel"), serverStatus::cannotComplete);

    EXPECT_EQ(timesSet, 2) << "to the spare CRTC, and back";
}

TEST_F(LayoutPlanTest, AScreenThatGrewOneWayAndShrankTheOtherIsPutBackWithAllThatWasOnIt) {
    for (const auto& [place, ghosts] : {std::pair(Area{1920, 0, 0, 0}, Area{0, 1080, 0, 0}),
                                        std::pair(Area{0, 1080, 0, 0}, Area{1920, 0, 0, 0})}) {
        start(SnapshotBuilder()
                  .output("A")
                  .on(0, 0)
                  .output("B")
                  .modes({mode::fullHd})
                  .on(place.x, place.y)
                  .output("ghost")
                  .on(ghosts.x, ghosts.y));
        remembered.update([](const auto&) { return layout::Memory{}; });
        ASSERT_EQ(off("B"), serverStatus::success);
        unplug("ghost");
        const Snapshot before = server.state;
        misplace("B");

        EXPECT_EQ(on("B"), serverStatus::cannotComplete);

        EXPECT_EQ(server.state, before);
    }
}

}  // namespace
}  // namespace tavrel::x11
