#include "platform/x11/crtc/CrtcChoice.h"
#include "tests/platform/x11/crtc/FaultyLayoutServer.h"
#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

/// Outputs that cannot be driven by every CRTC.
class CrtcMatchingTest : public SwitchFixture {
protected:
    /// An external holds the only CRTC that the panel can use.
    static SnapshotBuilder panelWithoutCrtc() {
        SnapshotBuilder desk;
        desk.output("A").on(0, 0).output("spare").disconnected().output("panel").crtcsOf({"A"});
        return desk;
    }

    Output& outputOf(const std::string& name) {
        for (Output& output : server.state.outputs) {
            if (output.name == name) {
                return output;
            }
        }
        throw std::out_of_range(name);
    }

    void allow(const std::string& name, const std::vector<std::string>& ownersOfCrtcs) {
        std::vector<Xid> crtcs;
        crtcs.reserve(ownersOfCrtcs.size());
        for (const std::string& owner : ownersOfCrtcs) {
            crtcs.push_back(own.at(owner));
        }
        outputOf(name).crtcs = crtcs;
    }

    void startNoting(const SnapshotBuilder& desk) {
        start(desk);
        Xid crtc = server.state.crtcs.front().id;
        for (const Output& output : server.state.outputs) {
            own[output.name] = crtc++;
        }
    }

    std::map<std::string, Xid> own;
};

TEST_F(CrtcMatchingTest, AnExternalMovesToAnotherCrtcSoThatThePanelCanComeOn) {
    startNoting(panelWithoutCrtc());
    allow("A", {"A", "spare"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "panel"), (Area{1920, 0, 1920, 1080}));
    EXPECT_EQ(outputOf("A").crtc, own["spare"]);
    EXPECT_EQ(outputOf("panel").crtc, own["A"]);
}

TEST_F(CrtcMatchingTest, WhereNoneCanMoveItIsRefusedAndAllStays) {
    startNoting(panelWithoutCrtc());
    const Snapshot before = server.state;

    EXPECT_EQ(on("panel"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
    EXPECT_EQ(server.requests, 0);
}

TEST_F(CrtcMatchingTest, SeveralMoveUpWhereOneMoveIsNotEnough) {
    startNoting(SnapshotBuilder()
                    .output("A")
                    .on(0, 0)
                    .output("B")
                    .on(1920, 0, mode::small)
                    .output("spare")
                    .disconnected()
                    .output("panel")
                    .crtcsOf({"A"}));
    allow("A", {"A", "B"});
    allow("B", {"B", "spare"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(outputOf("panel").crtc, own["A"]);
    EXPECT_EQ(outputOf("A").crtc, own["B"]);
    EXPECT_EQ(outputOf("B").crtc, own["spare"]);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1920, 1080}));
    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1280, 1024}));
    EXPECT_EQ(areaOf(server.state, "panel"), (Area{3200, 0, 1920, 1080}));
}

TEST_F(CrtcMatchingTest, NobodyMovesForOneThatFindsACrtcFree) {
    startNoting(SnapshotBuilder()
                    .output("A")
                    .on(0, 0)
                    .output("B")
                    .on(1920, 0)
                    .output("spare")
                    .disconnected()
                    .output("panel")
                    .crtcsOf({"A"}));
    allow("A", {"A", "B", "spare"});
    allow("B", {"B", "spare"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(outputOf("A").crtc, own["spare"]);
    EXPECT_EQ(outputOf("B").crtc, own["B"]);
}

TEST_F(CrtcMatchingTest, ATurnedPictureMovesOnlyToACrtcThatCanTurnIt) {
    startNoting(SnapshotBuilder()
                    .output("A")
                    .rotatable()
                    .on(0, 0, mode::fullHd, layout::rotate90)
                    .output("spare")
                    .disconnected()
                    .output("turns")
                    .rotatable()
                    .disconnected()
                    .output("panel")
                    .crtcsOf({"A"}));
    allow("A", {"A", "spare", "turns"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(outputOf("A").crtc, own["turns"]);
    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 1080, 1920}));
}

TEST_F(CrtcMatchingTest, ATransformMovesWithItsPicture) {
    startNoting(panelWithoutCrtc());
    allow("A", {"A", "spare"});
    Transform doubled;
    doubled.matrix = {2 << 16, 0, 0, 0, 2 << 16, 0, 0, 0, 1 << 16};
    for (Crtc& crtc : server.state.crtcs) {
        crtc.supportsTransforms = true;
    }
    server.state.screen = {3840, 2160, 960, 540};
    ASSERT_TRUE(server.setTransform({own["A"], doubled}));
    ASSERT_TRUE(
        server.setCrtc({.crtc = own["A"], .mode = mode::fullHd, .outputs = {outputOf("A").id}}, 0));

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "A"), (Area{0, 0, 3840, 2160}));
    EXPECT_EQ(areaOf(server.state, "panel"), (Area{3840, 0, 1920, 1080}));
    EXPECT_EQ(server.state.crtc(own["spare"])->transform, doubled);
    EXPECT_TRUE(server.state.crtc(own["A"])->transform.isIdentity());
}

TEST_F(CrtcMatchingTest, ClonesMoveOnlyToACrtcThatCanDriveBoth) {
    startNoting(SnapshotBuilder()
                    .output("A")
                    .on(0, 0)
                    .output("B")
                    .clones("A")
                    .output("spare")
                    .disconnected()
                    .output("both")
                    .disconnected()
                    .output("panel")
                    .crtcsOf({"A"}));
    allow("A", {"A", "spare", "both"});
    allow("B", {"A", "both"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(outputOf("A").crtc, own["both"]);
    EXPECT_EQ(outputOf("B").crtc, own["both"]);
    EXPECT_EQ(areaOf(server.state, "panel"), (Area{1920, 0, 1920, 1080}));
}

TEST_F(CrtcMatchingTest, NobodyMovesWhereACrtcIsFree) {
    startNoting(SnapshotBuilder().output("A").on(0, 0).output("panel"));
    allow("A", {"A", "panel"});
    allow("panel", {"A", "panel"});

    ASSERT_EQ(on("panel"), serverStatus::success);

    EXPECT_EQ(outputOf("A").crtc, own["A"]);
}

TEST_F(CrtcMatchingTest, AModeThatAMonitorHasNotIsNoChoice) {
    startNoting(SnapshotBuilder().output("A"));
    const layout::Shown unknown{.mode = {.width = 640, .height = 480}, .area = {0, 0, 640, 480}};

    EXPECT_TRUE(crtcChoices(server.state, outputOf("A"), unknown, {}).empty());
}

TEST_F(CrtcMatchingTest, WhoWasMovedInVainIsBackWhereItWas) {
    startNoting(panelWithoutCrtc());
    allow("A", {"A", "spare"});
    const Snapshot before = server.state;
    FaultyLayoutServer faulty(server);
    faulty.refuses = [&](const CrtcSetting& setting) {
        return setting.outputs.front() == outputOf("panel").id;
    };
    use(faulty);

    EXPECT_EQ(on("panel"), serverStatus::cannotComplete);

    EXPECT_EQ(server.state, before);
}

}  // namespace
}  // namespace tavrel::x11
