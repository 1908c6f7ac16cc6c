#include "platform/layout/LayoutDiff.h"

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {

void PrintTo(const DisplayReport& report, std::ostream* out) {
    *out << report.display << ": " << std::hex << report.flags << std::dec;
}

namespace {

using namespace displayChange;
using testing::ElementsAre;
using testing::IsEmpty;

/// A is on; B is the one that things happen to.
Desk withB() {
    return Desk().monitor(monitorA).at(0, 0).monitor(monitorB);
}

TEST(LayoutDiffTest, NoChangeIsNoReport) {
    EXPECT_THAT(reportsBetween(withB().at(1920, 0), withB().at(1920, 0)), IsEmpty());
    EXPECT_THAT(reportsBetween(withB(), withB().limitedTo(100, 100)), IsEmpty());
}

TEST(LayoutDiffTest, WhatComesOnOrGoesOffIsEnabledOrDisabled) {
    EXPECT_THAT(reportsBetween(withB(), withB().at(1920, 0)),
                ElementsAre(DisplayReport{monitorB, enabled}));
    EXPECT_THAT(reportsBetween(withB().at(1920, 0), withB()),
                ElementsAre(DisplayReport{monitorB, disabled}));
}

TEST(LayoutDiffTest, WhatIsPluggedInOrUnpluggedIsAddedOrRemoved) {
    EXPECT_THAT(reportsBetween(withB().unplugged(), withB()),
                ElementsAre(DisplayReport{monitorB, add}));
    EXPECT_THAT(reportsBetween(withB(), withB().unplugged()),
                ElementsAre(DisplayReport{monitorB, remove}));
    EXPECT_THAT(reportsBetween(withB().at(1920, 0), withB().at(1920, 0).unplugged()),
                ElementsAre(DisplayReport{monitorB, remove | disabled}))
        << "though it is still driven";
}

TEST(LayoutDiffTest, AnotherPlaceIsAMoveAndNothingElse) {
    const Layout before = withB().at(1920, 0);

    EXPECT_THAT(reportsBetween(before, withB().at(1921, 0)),
                ElementsAre(DisplayReport{monitorB, moved}));
    EXPECT_THAT(reportsBetween(before, withB().at(1920, 1)),
                ElementsAre(DisplayReport{monitorB, moved}));
}

TEST(LayoutDiffTest, AnotherModeSizeRotationOrScaleIsAMode) {
    const Layout before = withB().at(1920, 0);
    Layout wider = before;
    wider.outputs[1].shown->area.width += 1;
    Layout higher = before;
    higher.outputs[1].shown->area.height += 1;

    for (const Layout& after :
         {Layout(withB().at(1920, 0, fast)), Layout(withB().at(1920, 0, fullHd, rotate180)),
          Layout(withB().inPixels().scaledAt(2, 1920, 0, fullHd)), wider, higher}) {
        EXPECT_THAT(reportsBetween(before, after), ElementsAre(DisplayReport{monitorB, setMode}));
    }
    EXPECT_THAT(reportsBetween(before, withB().at(1920, 9, small)),
                ElementsAre(DisplayReport{monitorB, setMode | moved}));
}

TEST(LayoutDiffTest, OfThePrimaryRoleItsNewOwnerIsReported) {
    EXPECT_THAT(reportsBetween(withB(), withB().primaryIs(monitorB)),
                ElementsAre(DisplayReport{monitorB, setMain}));
    EXPECT_THAT(reportsBetween(withB(), withB().primaryIs(std::nullopt)), IsEmpty());
}

TEST(LayoutDiffTest, DisplaysThatComeToOverlapMirror) {
    EXPECT_THAT(
        reportsBetween(withB().at(1920, 0), withB().at(1919, 1079)),
        ElementsAre(DisplayReport{monitorA, mirror}, DisplayReport{monitorB, mirror | moved}));
    EXPECT_THAT(reportsBetween(withB().at(0, 0), withB()),
                ElementsAre(DisplayReport{monitorA, unMirror},
                            DisplayReport{monitorB, unMirror | disabled}));
}

TEST(LayoutDiffTest, NobodyMirrorsWhatNobodySees) {
    EXPECT_THAT(reportsBetween(withB().unplugged(), withB().at(0, 0).unplugged()), IsEmpty());
    EXPECT_THAT(reportsBetween(withB().at(0, 0), withB().at(0, 0).unplugged()),
                ElementsAre(DisplayReport{monitorA, unMirror},
                            DisplayReport{monitorB, unMirror | disabled | remove}));
}

TEST(LayoutDiffTest, ReportsComeByTheDisplaysNumbers) {
    const Desk before = Desk().monitor(monitorC).monitor(monitorA).monitor(monitorB);
    const Desk after =
        Desk().monitor(monitorC).at(0, 0).monitor(monitorA).monitor(monitorB).at(1920, 0);

    EXPECT_THAT(reportsBetween(before, after),
                ElementsAre(DisplayReport{monitorB, enabled}, DisplayReport{monitorC, enabled}));
}

}  // namespace
}  // namespace tavrel::layout
