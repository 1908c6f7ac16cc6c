#include "platform/layout/WholeLayout.h"

#include "platform/layout/LayoutPolicy.h"
#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Area fullHdAt(int x, int y) {
    return {x, y, 1920, 1080};
}

/// Three monitors in a row, A the primary, on a desk that somebody works at.
class WholeLayoutTest : public testing::Test {
protected:
    void switchOff(DisplayID display) {
        const auto whole = withoutDisplay(desk, display, memory);
        ASSERT_TRUE(whole.has_value());
        RememberedOutput was = describeInWhole(desk, display, memory);
        forget(memory, display);
        memory.push_back(std::move(was));
        apply(*whole);
    }

    void switchOn(DisplayID display) {
        const auto ways = withDisplay(desk, display, memory);
        ASSERT_FALSE(ways.empty());
        apply(ways.front());
        forget(memory, display);
    }

    std::optional<Area> place(DisplayID display) const {
        const auto& shown = desk.output(display)->shown;
        return shown.has_value() ? std::optional(shown->area) : std::nullopt;
    }

    void move(DisplayID display, int x, int y) {
        for (Output& output : desk.outputs) {
            if (output.display == display) {
                output.shown->area.x = x;
                output.shown->area.y = y;
            }
        }
    }

    void apply(const WholeLayout& whole) {
        for (Output& output : desk.outputs) {
            output.shown = whole.shown(output.display);
        }
        desk.primary = whole.primary;
    }

    const Layout row =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(3840,
                                                                                             0);
    Layout desk = row;
    Memory memory;
};

TEST_F(WholeLayoutTest, TheOthersCloseUpWhenOneGoesOff) {
    switchOff(monitorB);

    EXPECT_EQ(place(monitorA), fullHdAt(0, 0));
    EXPECT_EQ(place(monitorB), std::nullopt);
    EXPECT_EQ(place(monitorC), fullHdAt(1920, 0));
    EXPECT_EQ(desk.primary, monitorA);
}

TEST_F(WholeLayoutTest, WithoutTheFirstTheDesktopStillBeginsAtTheOrigin) {
    switchOff(monitorA);

    EXPECT_EQ(place(monitorB), fullHdAt(0, 0));
    EXPECT_EQ(place(monitorC), fullHdAt(1920, 0));
    EXPECT_EQ(desk.primary, monitorB);
}

TEST_F(WholeLayoutTest, TheLastOneStays) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB);

    EXPECT_EQ(withoutDisplay(desk, monitorA, {}), std::nullopt);
}

TEST_F(WholeLayoutTest, InWhateverOrderTheyGoAndComeAllIsAsBefore) {
    const std::vector<std::vector<DisplayID>> orders{
        {monitorA, monitorB}, {monitorB, monitorA}, {monitorA, monitorC}, {monitorC, monitorB}};
    for (const auto& off : orders) {
        for (const auto& on : {off, std::vector(off.rbegin(), off.rend())}) {
            desk = row;
            memory.clear();
            for (const DisplayID display : off) {
                switchOff(display);
            }
            for (const DisplayID left : {monitorA, monitorB, monitorC}) {
                EXPECT_EQ(place(left).value_or(fullHdAt(0, 0)), fullHdAt(0, 0)) << "alone";
            }
            for (const DisplayID display : on) {
                switchOn(display);
            }

            for (const DisplayID display : {monitorA, monitorB, monitorC}) {
                EXPECT_EQ(desk.output(display)->shown, row.output(display)->shown)
                    << off[0] << ' ' << off[1] << ", " << on[0] << ' ' << on[1];
            }
            EXPECT_EQ(desk.primary, monitorA);
        }
    }
}

TEST_F(WholeLayoutTest, WhatSomebodyHasMovedMeanwhileStaysThere) {
    switchOff(monitorB);
    move(monitorC, 0, 1080);

    switchOn(monitorB);

    EXPECT_EQ(place(monitorA), fullHdAt(0, 0));
    EXPECT_EQ(place(monitorB), fullHdAt(1920, 0));
    EXPECT_EQ(place(monitorC), fullHdAt(0, 1080));
}

TEST_F(WholeLayoutTest, WhatSomebodyHasMovedInBetweenStandsThereWhenAllAreBack) {
    constexpr DisplayID monitorD = 4;
    desk = Desk()
               .monitor(monitorD)
               .at(0, 0)
               .monitor(monitorA)
               .at(1920, 0)
               .monitor(monitorB)
               .at(3840, 0)
               .monitor(monitorC)
               .at(5760, 0);
    switchOff(monitorB);
    move(monitorC, 1920, 1080);
    switchOff(monitorC);
    switchOff(monitorA);

    switchOn(monitorC);
    switchOn(monitorA);

    EXPECT_EQ(place(monitorD), fullHdAt(0, 0));
    EXPECT_EQ(place(monitorA), fullHdAt(1920, 0));
    EXPECT_EQ(place(monitorC), fullHdAt(1920, 1080));
}

TEST_F(WholeLayoutTest, WhatIsInItsPlaceByNowStaysAndItComesAtTheRight) {
    switchOff(monitorC);
    move(monitorA, 1920, 0);
    move(monitorB, 3840, 0);
    desk.outputs.push_back({.display = 4,
                            .identity = {"D", {}},
                            .isConnected = true,
                            .modes = {fullHd},
                            .shown = Shown{fullHd, fullHdAt(0, 0)}});

    switchOn(monitorC);

    EXPECT_EQ(place(monitorB), fullHdAt(3840, 0));
    EXPECT_EQ(place(monitorC), fullHdAt(5760, 0));
}

TEST_F(WholeLayoutTest, OneThatComesOnElsewhereLeavesNoGap) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0);
    memory = {describe(
        Desk().monitor(monitorA).at(0, 0).monitor(monitorC).at(5000, 0).monitor(monitorB).at(3000,
                                                                                             0),
        monitorC, {})};
    desk.outputs.push_back(
        {.display = monitorC, .identity = {"C", {}}, .isConnected = true, .modes = {fullHd}});

    switchOn(monitorC);

    EXPECT_EQ(place(monitorC), fullHdAt(3840, 0));
}

TEST_F(WholeLayoutTest, OneThatNobodyHasSeenBesideTheOthersComesAtTheRight) {
    switchOff(monitorC);
    desk.outputs.push_back({.display = 4, .identity = {"D", {}}, .isConnected = true});
    desk.outputs.back().modes = {fullHd};
    const Layout elsewhere = Desk().monitor(4).at(0, 0);
    memory.push_back(describe(elsewhere, 4, {}));

    switchOn(4);

    EXPECT_EQ(place(4), fullHdAt(3840, 0));
}

TEST_F(WholeLayoutTest, OneOfAnotherSizeThanTheOthersKnewHasItsOwn) {
    for (const Mode& other : {Mode{1920, 1200, 60000}, Mode{1280, 1080, 60000}}) {
        desk = row;
        desk.outputs[1].modes = {fullHd, other};
        memory.clear();
        switchOff(monitorC);
        Layout changed = desk;
        changed.outputs[1].shown = {other, {1920, 0, other.width, other.height}};
        memory.push_back(describe(changed, monitorB, memory));
        desk.outputs[1].shown.reset();

        switchOn(monitorB);

        EXPECT_EQ(desk.output(monitorB)->shown->mode, other);
        EXPECT_EQ(place(monitorB), (Area{1920, 0, other.width, other.height}));
    }
}

TEST_F(WholeLayoutTest, NobodyComesBackInASizeThatItsModeHasNot) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB);
    for (const Area& stretched : {Area{0, 1080, 1920, 1200}, Area{0, 1080, 1280, 1080}}) {
        memory = {{.display = monitorB, .mode = fullHd, .area = stretched}};

        EXPECT_EQ(withDisplay(desk, monitorB, memory).front().shown(monitorB)->area,
                  fullHdAt(1920, 0));
    }
}

TEST_F(WholeLayoutTest, AMirrorComesBackOntoTheOther) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(
        1920, 0);
    switchOff(monitorB);

    EXPECT_EQ(place(monitorC), fullHdAt(1920, 0));

    switchOn(monitorB);

    EXPECT_EQ(place(monitorB), fullHdAt(1920, 0));
    EXPECT_EQ(place(monitorC), fullHdAt(1920, 0));
}

TEST_F(WholeLayoutTest, SomebodyElseIsPrimaryMeanwhileAndExactlyOne) {
    switchOff(monitorA);
    EXPECT_EQ(desk.primary, monitorB);

    switchOff(monitorB);
    EXPECT_EQ(desk.primary, monitorC);

    switchOn(monitorB);
    EXPECT_EQ(desk.primary, monitorB);

    switchOn(monitorA);
    EXPECT_EQ(desk.primary, monitorA);
}

TEST_F(WholeLayoutTest, WhereNobodyIsPrimarySomebodyBecomesIt) {
    for (const std::optional<DisplayID> nobody :
         {std::optional<DisplayID>(), std::optional<DisplayID>(0)}) {
        desk = row;
        desk.primary = nobody;
        EXPECT_EQ(withoutDisplay(desk, monitorA, {})->primary, monitorB);
        EXPECT_EQ(withoutDisplay(desk, monitorC, {})->primary, monitorA);

        move(monitorA, 5760, 0);
        EXPECT_EQ(withoutDisplay(desk, monitorC, {})->primary, monitorB) << "it is the first now";

        const Layout lit = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).primaryIs(nobody);
        EXPECT_EQ(withDisplay(lit, monitorB, {}).front().primary, monitorA);
        EXPECT_EQ(wholeOf(lit).primary, 0U) << "until then";
    }

    const Layout dark = Desk().monitor(monitorA).monitor(monitorB).primaryIs(0);
    EXPECT_EQ(withDisplay(dark, monitorB, {}).front().primary, monitorB);
}

TEST_F(WholeLayoutTest, ThePreferredModeAndThenOthersAreTried) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB);

    const auto ways = withDisplay(desk, monitorB, {});

    ASSERT_EQ(ways.size(), 2U);
    EXPECT_EQ(ways[0].shown(monitorB)->mode, fullHd);
    EXPECT_EQ(ways[1].shown(monitorB)->mode, small);
}

TEST_F(WholeLayoutTest, NoWayIsOfferedTwice) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0);
    switchOff(monitorB);

    // As it was, with the same again at the right left out; then the other mode.
    EXPECT_EQ(withDisplay(desk, monitorB, memory).size(), 2U);
}

TEST_F(WholeLayoutTest, WhatIsUnpluggedIsNotMentioned) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(
        3840, 0);
    desk.outputs.front().isConnected = false;

    const auto whole = withoutDisplay(desk, monitorC, {});

    ASSERT_TRUE(whole.has_value());
    EXPECT_THAT(whole->places, ElementsAre(testing::Field(&WholeLayout::Place::display, monitorB),
                                           testing::Field(&WholeLayout::Place::display, monitorC)));
    EXPECT_THAT(whole->shown(monitorB)->area, fullHdAt(0, 0));
    EXPECT_EQ(whole->primary, monitorB);
}

TEST_F(WholeLayoutTest, WhatIsUnpluggedHasNoPlaceToReturnTo) {
    switchOff(monitorB);
    ASSERT_THAT(describeInWhole(desk, monitorC, memory).arrangement, testing::SizeIs(3));

    desk.outputs[1].isConnected = false;
    EXPECT_THAT(describeInWhole(desk, monitorC, memory).arrangement, testing::SizeIs(2));

    desk.outputs.erase(desk.outputs.begin() + 1);
    EXPECT_THAT(describeInWhole(desk, monitorC, memory).arrangement, testing::SizeIs(2));
}

TEST_F(WholeLayoutTest, NothingGoesBeyondTheLargestDesktop) {
    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).limitedTo(3300, 1080);
    EXPECT_EQ(withDisplay(desk, monitorB, {}).size(), 1U) << "the small mode alone";

    desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).limitedTo(1920, 1080);
    EXPECT_THAT(withDisplay(desk, monitorB, {}), IsEmpty());
}

/// A laptop's panel beside a monitor of four times its pixels, shown at twice the size.
class ScaledTest : public WholeLayoutTest {
protected:
    ScaledTest() {
        hugeAtScales.scales = {2, 1};
        desk = Desk()
                   .monitor(monitorA)
                   .offering({hugeAtScales})
                   .scaledAt(2, 0, 0, hugeAtScales)
                   .monitor(monitorB)
                   .at(1920, 0);
    }

    Mode hugeAtScales = huge;
};

TEST_F(ScaledTest, ItTakesUpTheAreaThatItsScaleLeaves) {
    EXPECT_EQ(place(monitorA), fullHdAt(0, 0));
    EXPECT_EQ(Layout{.isInPixels = true}.areaOf(huge, rotate90, 2), (Area{0, 0, 2160, 3840}));
    EXPECT_EQ(Layout{}.areaOf(huge, rotate90, 1.5), (Area{0, 0, 1440, 2560}));
}

TEST_F(ScaledTest, TheScaleComesBackToo) {
    const auto before = desk.output(monitorA)->shown;
    switchOff(monitorA);
    memory = decodeMemory(encodeMemory(memory)).value();

    switchOn(monitorA);

    EXPECT_EQ(desk.output(monitorA)->shown, before);
    EXPECT_EQ(place(monitorB), fullHdAt(1920, 0));
    EXPECT_EQ(desk.primary, monitorA);
}

TEST_F(ScaledTest, OneNeverSeenOnHasTheScaleThatItsModePrefers) {
    desk = Desk().monitor(monitorB).at(0, 0).monitor(monitorA).offering({hugeAtScales});

    const auto ways = withDisplay(desk, monitorA, {});

    ASSERT_EQ(ways.size(), 1U);
    EXPECT_EQ(ways[0].shown(monitorA)->scale, 2);
    EXPECT_EQ(ways[0].shown(monitorA)->area, fullHdAt(1920, 0));
}

TEST_F(ScaledTest, AScaleThatIsNotOfferedAnyMoreIsReplaced) {
    switchOff(monitorA);
    desk.outputs[0].modes[0].scales = {1.5, 1};

    switchOn(monitorA);

    EXPECT_EQ(desk.output(monitorA)->shown->scale, 1.5);
    EXPECT_EQ(place(monitorA), (Area{1920, 0, 2560, 1440}));
}

TEST_F(ScaledTest, WhereTheDesktopCountsPixelsTheAreaStays) {
    desk = Desk()
               .inPixels()
               .monitor(monitorA)
               .offering({hugeAtScales})
               .scaledAt(2, 0, 0, hugeAtScales)
               .monitor(monitorB)
               .at(3840, 0);
    const auto before = desk.output(monitorA)->shown;
    switchOff(monitorA);

    switchOn(monitorA);

    EXPECT_EQ(before->area, (Area{0, 0, 3840, 2160}));
    EXPECT_EQ(desk.output(monitorA)->shown, before);
    EXPECT_EQ(place(monitorB), fullHdAt(3840, 0));
}

}  // namespace
}  // namespace tavrel::layout
