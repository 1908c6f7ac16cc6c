#include "platform/layout/LayoutDiff.h"

#include <gmock/gmock.h>

#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

namespace tavrel::x11 {
namespace {

using namespace displayChange;
using layout::DisplayReport;
using layout::reportsBetween;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// A at the left, B right of it.
SnapshotBuilder pair() {
    SnapshotBuilder builder;
    builder.output("A").on(0, 0).output("B").edid({1, 2, 3});
    return builder;
}

DisplayReport report(const SnapshotBuilder& builder, const std::string& name, std::uint32_t flags) {
    return {displayNamed(builder.build(), name), flags};
}

std::vector<DisplayReport> between(const SnapshotBuilder& before, const SnapshotBuilder& after) {
    return reportsBetween(layoutOf(before.build()), layoutOf(after.build()));
}

TEST(SnapshotDiffTest, NoChangeIsNoReport) {
    EXPECT_THAT(between(pair(), pair()), IsEmpty());
    EXPECT_THAT(between(pair(), pair().screen(9000, 9000)), IsEmpty());
}

TEST(SnapshotDiffTest, ACrtcGainedOrLostIsEnabledOrDisabled) {
    const SnapshotBuilder off = pair();
    const SnapshotBuilder on = pair().on(1920, 0);
    EXPECT_THAT(between(off, on), ElementsAre(report(on, "B", enabled)));
    EXPECT_THAT(between(on, off), ElementsAre(report(on, "B", disabled)));
}

TEST(SnapshotDiffTest, AMonitorConnectedOrNotIsAddedOrRemoved) {
    const SnapshotBuilder without = pair().edid({}).disconnected();
    EXPECT_THAT(between(without, pair()), ElementsAre(report(pair(), "B", add)));
    EXPECT_THAT(between(pair(), without), ElementsAre(report(pair(), "B", remove)))
        << "by the number it had while its monitor could be asked";
    const SnapshotBuilder on = pair().on(1920, 0);
    EXPECT_THAT(between(without, on), ElementsAre(report(on, "B", add | enabled)));
    EXPECT_THAT(between(on, without), ElementsAre(report(on, "B", remove | disabled)));
}

TEST(SnapshotDiffTest, AMonitorSwappedForAnotherIsOneRemovedAndOneAdded) {
    const SnapshotBuilder swapped = pair().edid({4, 5, 6});
    EXPECT_THAT(between(pair(), swapped),
                UnorderedElementsAre(report(pair(), "B", remove), report(swapped, "B", add)));
}

TEST(SnapshotDiffTest, AnotherPlaceIsAMove) {
    const SnapshotBuilder before = pair().on(1920, 0);
    EXPECT_THAT(between(before, pair().on(1920, 1)), ElementsAre(report(before, "B", moved)));
    EXPECT_THAT(between(before, pair().on(1921, 0)), ElementsAre(report(before, "B", moved)));
}

TEST(SnapshotDiffTest, AnotherModeOrRotationIsAMode) {
    const SnapshotBuilder before = pair().on(1920, 0);
    EXPECT_THAT(between(before, pair().on(1920, 0, mode::small)),
                ElementsAre(report(before, "B", setMode)));
    EXPECT_THAT(between(before, pair().on(1920, 0, mode::fullHd, layout::rotate90)),
                ElementsAre(report(before, "B", setMode)));
    EXPECT_THAT(between(before, pair().on(1920, 9, mode::small)),
                ElementsAre(report(before, "B", setMode | moved)));
}

TEST(SnapshotDiffTest, AModeWithAnotherNumberIsStillTheSame) {
    Snapshot renumbered = pair().build();
    for (Mode& each : renumbered.modes) {
        each.id += 100;
    }
    for (Crtc& crtc : renumbered.crtcs) {
        crtc.mode += crtc.mode != 0 ? 100U : 0U;
    }
    EXPECT_THAT(reportsBetween(layoutOf(pair().build()), layoutOf(renumbered)), IsEmpty());
}

TEST(SnapshotDiffTest, TheNewPrimaryIsReportedNotTheOldOne) {
    const SnapshotBuilder before = pair().on(1920, 0);
    const SnapshotBuilder after = pair().on(1920, 0).primary();
    EXPECT_THAT(between(before, after), ElementsAre(report(before, "B", setMain)));
    EXPECT_THAT(between(after, before), ElementsAre(report(before, "A", setMain)));
}

TEST(SnapshotDiffTest, DisplaysThatComeToOverlapMirror) {
    const SnapshotBuilder apart = pair().on(1920, 0);
    const SnapshotBuilder together = pair().on(0, 0);
    EXPECT_THAT(between(apart, together), UnorderedElementsAre(report(apart, "A", mirror),
                                                               report(apart, "B", mirror | moved)));
    EXPECT_THAT(
        between(together, apart),
        UnorderedElementsAre(report(apart, "A", unMirror), report(apart, "B", unMirror | moved)));
}

TEST(SnapshotDiffTest, DisplaysThatShareACrtcMirror) {
    const SnapshotBuilder cloned = pair().clones("A");
    EXPECT_THAT(
        between(pair(), cloned),
        UnorderedElementsAre(report(cloned, "A", mirror), report(cloned, "B", mirror | enabled)));
    EXPECT_THAT(between(cloned, pair()),
                UnorderedElementsAre(report(cloned, "A", unMirror),
                                     report(cloned, "B", unMirror | disabled)));
}

}  // namespace
}  // namespace tavrel::x11
