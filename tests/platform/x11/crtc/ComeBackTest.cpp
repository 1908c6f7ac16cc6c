#include "tests/platform/x11/crtc/SwitchFixture.h"

namespace tavrel::x11 {
namespace {

/// Another program switches off what was never switched off here.
class ComeBackTest : public SwitchFixture {
protected:
    void look() { noteSeen(lastSeen, server.state); }

    void allOffFromOutside() {
        for (const Output& output : std::vector(server.state.outputs)) {
            offFromOutside(output.name);
        }
    }
};

TEST_F(ComeBackTest, AllComeBackAsTheyWereInWhateverOrder) {
    start(SnapshotBuilder()
              .output("A")
              .on(1280, 0)
              .output("B")
              .on(0, 0, mode::small)
              .output("C")
              .rotatable()
              .on(3200, 0, mode::fullHd, layout::rotate90)
              .primary());
    const Snapshot before = server.state;
    look();

    for (const auto& order : {"ABC", "CBA", "BCA"}) {
        allOffFromOutside();
        for (const char name : std::string(order)) {
            ASSERT_EQ(on({name}), serverStatus::success);
        }
        EXPECT_EQ(server.state, before) << order;
    }
}

TEST_F(ComeBackTest, WithItsTransform) {
    start(SnapshotBuilder().output("A").on(0, 0).output("B").on(1920, 0));
    Crtc& crtc = server.state.crtcs[1];
    crtc.supportsTransforms = true;
    Transform doubled;
    doubled.matrix = {2 << 16, 0, 0, 0, 2 << 16, 0, 0, 0, 1 << 16};
    ASSERT_TRUE(server.setTransform({crtc.id, doubled}));
    server.state.screen = {5760, 2160, 1440, 540};
    ASSERT_TRUE(server.setCrtc(
        {.crtc = crtc.id, .mode = mode::fullHd, .x = 1920, .outputs = {server.state.outputs[1].id}},
        0));
    look();
    offFromOutside("B");
    ASSERT_TRUE(server.setTransform({crtc.id, Transform()}));

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 3840, 2160}));
}

TEST_F(ComeBackTest, EachSwitchIsALookToo) {
    start(threeInARow());
    const Snapshot before = server.state;
    ASSERT_EQ(off("C"), serverStatus::success);
    offFromOutside("B");
    offFromOutside("A");

    for (const char* name : {"C", "B", "A"}) {
        ASSERT_EQ(on(name), serverStatus::success);
    }

    EXPECT_EQ(server.state, before);
}

TEST_F(ComeBackTest, NothingOfItIsStored) {
    start(threeInARow());
    look();
    offFromOutside("B");

    ASSERT_EQ(on("B"), serverStatus::success);

    EXPECT_EQ(areaOf(server.state, "B"), (Area{1920, 0, 1920, 1080}));
    EXPECT_TRUE(remembered.all().empty());
    EXPECT_EQ(store.writes(), 0U);
}

}  // namespace
}  // namespace tavrel::x11
