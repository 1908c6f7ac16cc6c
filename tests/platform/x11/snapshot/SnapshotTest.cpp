#include "platform/x11/snapshot/Snapshot.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel::x11 {
namespace {

const layout::Output& outputIn(const layout::Layout& layout, const std::string& name) {
    return *std::find_if(layout.outputs.begin(), layout.outputs.end(),
                         [&](const auto& output) { return output.identity.connector == name; });
}

TEST(SnapshotTest, TellsWhatEachOutputShows) {
    const layout::EdidNumbers edid{1, 2, 3};
    const Snapshot snapshot = SnapshotBuilder()
                                  .output("A")
                                  .edid(edid)
                                  .on(10, 20, mode::small, layout::rotate90)
                                  .output("B")
                                  .disconnected()
                                  .build();

    const layout::Layout layout = layoutOf(snapshot);

    const layout::Mode& small = snapshot.mode(mode::small)->description;
    const layout::Output& on = outputIn(layout, "A");
    EXPECT_EQ(on.identity.edid, edid);
    EXPECT_TRUE(on.isConnected);
    EXPECT_THAT(on.modes, testing::ElementsAre(snapshot.mode(mode::fullHd)->description, small));
    EXPECT_EQ(on.shown, (layout::Shown{small, {10, 20, 1024, 1280}, layout::rotate90}));
    EXPECT_FALSE(outputIn(layout, "B").isConnected);
    EXPECT_EQ(outputIn(layout, "B").shown, std::nullopt);
}

TEST(SnapshotTest, NumbersDisplaysByConnectorAndMonitorAlone) {
    const SnapshotBuilder plain = SnapshotBuilder().output("A").edid({1, 2, 3});
    const SnapshotBuilder busy = SnapshotBuilder()
                                     .output("B")
                                     .output("A")
                                     .edid({1, 2, 3})
                                     .modes({mode::huge})
                                     .on(500, 500, mode::huge);

    EXPECT_EQ(displayNamed(plain.build(), "A"), layout::stableHash("A/1/2/3"));
    EXPECT_EQ(displayNamed(busy.build(), "A"), layout::stableHash("A/1/2/3"));
}

TEST(SnapshotTest, ACrtcThatIsOffIsFreeWhateverItNames) {
    Snapshot snapshot = SnapshotBuilder().output("A").on(0, 0).build();
    Crtc& crtc = snapshot.crtcs.front();
    ASSERT_FALSE(snapshot.isFree(crtc));

    crtc.mode = 0;

    EXPECT_TRUE(snapshot.isFree(crtc));
}

TEST(SnapshotTest, TellsWhoIsPrimary) {
    const SnapshotBuilder pair = SnapshotBuilder().output("A").output("B").primary();
    Snapshot nobody = pair.build();
    nobody.primary = 0;

    EXPECT_EQ(layoutOf(pair.build()).primary, displayNamed(pair.build(), "B"));
    EXPECT_EQ(layoutOf(nobody).primary, DisplayID{0});
    EXPECT_EQ(layoutOf(SnapshotBuilder(pair).withoutPrimary().build()).primary, std::nullopt);
}

TEST(SnapshotTest, LimitsPlacesToTheServersScreenAndToWhatCanBeSent) {
    EXPECT_EQ(layoutOf(SnapshotBuilder().limits(6000, 5000).build()).maxWidth, 6000);
    EXPECT_EQ(layoutOf(SnapshotBuilder().limits(6000, 5000).build()).maxHeight, 5000);
    EXPECT_EQ(layoutOf(SnapshotBuilder().limits(65535, 65535).build()).maxWidth, 32767);
    EXPECT_EQ(layoutOf(SnapshotBuilder().limits(65535, 65535).build()).maxHeight, 32767);
}

TEST(SnapshotTest, FindsTheOutputOfADisplay) {
    const Snapshot snapshot = SnapshotBuilder().output("A").output("B").build();
    const layout::Layout layout = layoutOf(snapshot);

    EXPECT_EQ(outputOf(snapshot, layout, displayNamed(snapshot, "B")), &snapshot.outputs[1]);
    EXPECT_EQ(outputOf(snapshot, layout, 0), nullptr);
}

}  // namespace
}  // namespace tavrel::x11
