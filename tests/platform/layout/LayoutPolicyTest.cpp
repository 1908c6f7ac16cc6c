#include "platform/layout/LayoutPolicy.h"

#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {

void PrintTo(const WayBack& way, std::ostream* out) {
    PrintTo(way.shown.area, out);
    *out << " at " << way.shown.mode.refreshMillihertz << " mHz, turned " << way.shown.rotation
         << (way.isAsItWas ? ", as it was" : ", anew");
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// What is remembered of `display` when it goes off from this desk.
RememberedOutput seen(DisplayID display, const Layout& desk) {
    return describe(desk, display, {});
}

WayBack asItWas(const Shown& shown) {
    return {shown, true};
}

WayBack anew(int x, int y, Mode mode = fullHd) {
    return {{mode, {x, y, mode.width, mode.height}, rotate0}, false};
}

WayBack anewTurned(int x, int y, Rotation rotation) {
    return {{fullHd, {x, y, fullHd.height, fullHd.width}, rotation}, false};
}

TEST(LastShownTest, IsWhoIsOnAlone) {
    EXPECT_TRUE(isLastShown(Desk().monitor(monitorA).at(0, 0), monitorA));
    EXPECT_TRUE(isLastShown(Desk().monitor(monitorA).at(0, 0).monitor(monitorB), monitorA));

    EXPECT_FALSE(
        isLastShown(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0), monitorA));
    EXPECT_FALSE(
        isLastShown(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(0, 0), monitorA))
        << "a mirror";
}

TEST(LastShownTest, AnUnpluggedMonitorThatIsStillDrivenShowsNothing) {
    EXPECT_TRUE(isLastShown(
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).unplugged(), monitorA));
}

TEST(DescribeTest, TellsModePlaceAndRotation) {
    const Layout desk =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 40, small, rotate90);

    const RememberedOutput was = seen(monitorB, desk);

    EXPECT_EQ(was.display, monitorB);
    EXPECT_EQ(was.mode, small);
    EXPECT_EQ(was.area, (Area{1920, 40, 1024, 1280}));
    EXPECT_EQ(was.rotation, rotate90);
    EXPECT_THAT(was.mirrors, IsEmpty());
    EXPECT_FALSE(was.primary);
    EXPECT_EQ(was.notes, "{}");
}

TEST(DescribeTest, NamesWhatShowsPartOfTheSamePictureAsMirrors) {
    const Layout desk = Desk()
                            .monitor(monitorA)
                            .at(0, 0)
                            .monitor(monitorB)
                            .at(1919, 1079)
                            .monitor(monitorC)
                            .at(1920, 0);

    EXPECT_THAT(seen(monitorA, desk).mirrors, ElementsAre(monitorB));
    EXPECT_THAT(seen(monitorB, desk).mirrors, ElementsAre(monitorA, monitorC));
    EXPECT_THAT(seen(monitorC, desk).mirrors, ElementsAre(monitorB)) << "A only touches it";
}

TEST(DescribeTest, ThePrimaryHasItsRoleOnLoanWhileTheOwnerIsOff) {
    const Layout before = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0);
    const Memory memory{seen(monitorA, before)};
    const Desk after = Desk().monitor(monitorA).monitor(monitorB).at(1920, 0).primaryIs(monitorB);

    EXPECT_TRUE(seen(monitorA, before).primary);
    EXPECT_FALSE(seen(monitorA, before).primaryOnLoan);
    EXPECT_TRUE(describe(after, monitorB, memory).primary);
    EXPECT_TRUE(describe(after, monitorB, memory).primaryOnLoan);
}

TEST(DescribeTest, WithItsOwnerOnOrGoneTheRoleIsNotOnLoan) {
    const Memory memory{seen(monitorA, Desk().monitor(monitorA).at(0, 0))};

    const Layout on =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).primaryIs(monitorB);
    const Layout gone =
        Desk().monitor(monitorA).unplugged().monitor(monitorB).at(1920, 0).primaryIs(monitorB);

    EXPECT_FALSE(describe(on, monitorB, memory).primaryOnLoan);
    EXPECT_FALSE(describe(gone, monitorB, memory).primaryOnLoan);
}

TEST(NextPrimaryTest, IsTheOneNearestToTheOrigin) {
    EXPECT_EQ(
        nextPrimary(
            Desk().monitor(monitorA).at(3840, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(
                0, 500),
            monitorA),
        monitorC);
    EXPECT_EQ(
        nextPrimary(
            Desk().monitor(monitorA).at(0, 0).monitor(monitorC).at(0, 0).monitor(monitorB).at(0, 0),
            monitorA),
        monitorB)
        << "by connector where they are in one place";
}

TEST(NextPrimaryTest, IsNobodyWhenTheRoleStaysOrNobodyIsLeft) {
    const Desk desk = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0);

    EXPECT_EQ(nextPrimary(desk, monitorB), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk(desk).primaryIs(std::nullopt), monitorA), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk(desk).primaryIs(0), monitorA), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk().monitor(monitorA).at(0, 0).monitor(monitorB), monitorA),
              std::nullopt);
}

/// A, the primary, went off first, then B, which had the role meanwhile; C has it now.
class RegainsPrimaryTest : public testing::Test {
protected:
    RegainsPrimaryTest() {
        memory.push_back(describe(Desk(desk).primaryIs(monitorA), monitorA, memory));
        desk = Desk()
                   .monitor(monitorA)
                   .monitor(monitorB)
                   .at(1920, 0)
                   .monitor(monitorC)
                   .at(3840, 0)
                   .primaryIs(monitorB);
        memory.push_back(describe(desk, monitorB, memory));
        desk = Desk().monitor(monitorA).monitor(monitorB).monitor(monitorC).at(3840, 0).primaryIs(
            monitorC);
    }

    Desk desk =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).monitor(monitorC).at(3840,
                                                                                             0);
    Memory memory;
};

TEST_F(RegainsPrimaryTest, TheOwnerDoes) {
    EXPECT_TRUE(regainsPrimary(desk, monitorA, memory));
}

TEST_F(RegainsPrimaryTest, TheOneWithALoanDoesWhileTheOwnerIsOff) {
    EXPECT_TRUE(regainsPrimary(desk, monitorB, memory));

    forget(memory, monitorA);
    const Layout ownerIsBack =
        Desk().monitor(monitorA).at(0, 0).monitor(monitorB).monitor(monitorC).at(3840, 0);
    EXPECT_FALSE(regainsPrimary(ownerIsBack, monitorB, memory));
}

TEST_F(RegainsPrimaryTest, NobodyElseDoes) {
    EXPECT_FALSE(regainsPrimary(desk, monitorC, memory));
    memory.push_back(
        seen(monitorC, Desk().monitor(monitorA).at(0, 0).monitor(monitorC).at(3840, 0)));
    EXPECT_FALSE(regainsPrimary(desk, monitorC, memory)) << "it was not primary";
}

TEST_F(RegainsPrimaryTest, NothingIsToBeDoneForThePrimaryOrWithoutAny) {
    EXPECT_FALSE(regainsPrimary(Desk(desk).primaryIs(monitorA), monitorA, memory));
    EXPECT_FALSE(regainsPrimary(Desk(desk).primaryIs(std::nullopt), monitorA, memory));
    EXPECT_TRUE(regainsPrimary(Desk(desk).primaryIs(0), monitorA, memory))
        << "nobody is: it can be";
}

/// B, right of A, has been switched off.
class WaysBackTest : public testing::Test {
protected:
    const Shown was{small, {1920, 56, 1280, 1024}, rotate0};
    const Memory memory{
        seen(monitorB, Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 56, small))};
};

TEST_F(WaysBackTest, BeginWithHowItWasAndEndAtTheRight) {
    EXPECT_THAT(waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB), monitorB, memory),
                ElementsAre(asItWas(was), anew(1920, 0, small), anew(1920, 0)));
}

TEST_F(WaysBackTest, KeepItTurnedWherePossible) {
    const Rotation rotation = rotate90 | reflectX;
    const Memory turned{seen(monitorB, Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(
                                           1920, 0, fullHd, rotation))};

    EXPECT_THAT(waysBack(Desk().monitor(monitorA).at(0, 30).monitor(monitorB).offering({fullHd}),
                         monitorB, turned),
                ElementsAre(asItWas({fullHd, {1920, 0, 1080, 1920}, rotation}),
                            anewTurned(1920, 30, rotation), anew(1920, 30)));
}

TEST_F(WaysBackTest, AreOnlyAnewForOneNeverSeenOn) {
    EXPECT_THAT(
        waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).offering({small, fullHd}),
                 monitorB, {}),
        ElementsAre(anew(1920, 0, small), anew(1920, 0)));
}

TEST_F(WaysBackTest, AreOnlyAnewWhenItsModeIsGone) {
    for (const Mode& other : {fullHd, Mode{1280, 1024, 75000}, Mode{1280, 1024, 60000, {1}}}) {
        EXPECT_THAT(waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).offering({other}),
                             monitorB, memory),
                    ElementsAre(anew(1920, 0, other)));
    }
}

TEST_F(WaysBackTest, AreOnlyAnewWhenItsPlaceIsTakenIfOnlyInPart) {
    EXPECT_THAT(
        waysBack(Desk().monitor(monitorA).at(1920, 56, small).monitor(monitorB), monitorB, memory),
        ElementsAre(anew(3200, 56, small), anew(3200, 56)));
    EXPECT_THAT(
        waysBack(Desk().monitor(monitorA).at(3199, 1079).monitor(monitorB), monitorB, memory),
        ElementsAre(anew(5119, 1079, small), anew(5119, 1079)));
    EXPECT_THAT(
        waysBack(Desk().monitor(monitorA).at(3200, 1080).monitor(monitorB), monitorB, memory),
        ElementsAre(asItWas(was), anew(5120, 1080, small), anew(5120, 1080)))
        << "a corner that only touches is no matter";
}

TEST_F(WaysBackTest, LeadOntoItsOldMirrors) {
    const Layout mirrored = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(0, 0);

    EXPECT_EQ(waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB), monitorB,
                       {seen(monitorB, mirrored)})
                  .front(),
              asItWas({fullHd, {0, 0, 1920, 1080}, rotate0}));
}

TEST_F(WaysBackTest, LeadToTheOriginWhenNothingIsOn) {
    EXPECT_THAT(waysBack(Desk().monitor(monitorA).monitor(monitorB), monitorB, {}),
                ElementsAre(anew(0, 0), anew(0, 0, small)));
}

TEST_F(WaysBackTest, AreLevelWithTheHigherOfTwoThatEndAtTheRight) {
    EXPECT_EQ(
        waysBack(Desk().monitor(monitorA).at(0, 1080).monitor(monitorC).at(0, 20).monitor(monitorB),
                 monitorB, {})
            .front(),
        anew(1920, 20));
    EXPECT_EQ(
        waysBack(Desk().monitor(monitorA).at(0, 20).monitor(monitorC).at(0, 1080).monitor(monitorB),
                 monitorB, {})
            .front(),
        anew(1920, 20))
        << "whichever comes first";
}

TEST_F(WaysBackTest, StayWithinTheLargestDesktop) {
    const auto within = [](int width, int height) {
        return Desk().monitor(monitorA).at(0, 0).monitor(monitorB).limitedTo(width, height);
    };

    EXPECT_THAT(waysBack(within(3840, 1080), monitorB, memory),
                ElementsAre(asItWas(was), anew(1920, 0, small), anew(1920, 0)));
    EXPECT_THAT(waysBack(within(3839, 1080), monitorB, memory),
                ElementsAre(asItWas(was), anew(1920, 0, small)));
    EXPECT_THAT(waysBack(within(3840, 1079), monitorB, memory), ElementsAre(anew(1920, 0, small)));
    EXPECT_THAT(waysBack(within(3199, 1080), monitorB, memory), IsEmpty());
}

TEST_F(WaysBackTest, AreNoneWithoutAMode) {
    EXPECT_THAT(waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).offering({}), monitorB,
                         memory),
                IsEmpty());
}

TEST_F(WaysBackTest, LeadThroughTheOtherModesInTheirOrder) {
    EXPECT_THAT(
        waysBack(
            Desk().monitor(monitorA).at(0, 0).monitor(monitorB).offering({fullHd, fast, small}),
            monitorB, memory),
        ElementsAre(asItWas(was), anew(1920, 0, small), anew(1920, 0), anew(1920, 0, fast)));
}

TEST_F(WaysBackTest, LeadThroughFewModesBesideAnotherAndThroughAllWhenThereIsNone) {
    std::vector<Mode> many;
    many.reserve(20);
    for (int i = 0; i < 20; ++i) {
        many.push_back({.width = 1920, .height = 1080, .refreshMillihertz = 60000 - i});
    }
    const Desk beside = Desk().monitor(monitorA).at(0, 0).monitor(monitorB).offering(many);
    const Desk alone = Desk().monitor(monitorA).monitor(monitorB).offering(many);

    EXPECT_EQ(waysBack(beside, monitorB, {}).size(), 8U);
    ASSERT_EQ(waysBack(alone, monitorB, {}).size(), many.size());
    EXPECT_EQ(waysBack(alone, monitorB, {}).back(), anew(0, 0, many.back()));
}

TEST_F(WaysBackTest, HaveTheOldScaleInTheOldModeAndThePreferredOneInOthers) {
    Mode itsMode = huge;
    Mode otherMode = fullHd;
    itsMode.scales = otherMode.scales = {1, 2};
    const Desk free = Desk().monitor(monitorB).offering({otherMode, itsMode});
    const Memory enlarged{seen(monitorB, Desk(free).scaledAt(2, 1920, 0, itsMode))};

    const auto ways = waysBack(Desk(free).monitor(monitorA).at(1920, 0), monitorB, enlarged);

    ASSERT_EQ(ways.size(), 2U) << "its place is taken";
    EXPECT_EQ(ways[0].shown.mode, itsMode);
    EXPECT_EQ(ways[0].shown.scale, 2);
    EXPECT_EQ(ways[1].shown.mode, otherMode);
    EXPECT_EQ(ways[1].shown.scale, 1);
}

TEST_F(WaysBackTest, LeadToASmallerModeWhereThePreferredHasNoRoom) {
    EXPECT_THAT(waysBack(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).limitedTo(3300, 1080),
                         monitorB, {}),
                ElementsAre(anew(1920, 0, small)));
}

/// The monitors that were unplugged while they were on, and are driven all the same.
class UnseenTest : public testing::Test {
protected:
    static Desk withGhost() {
        return Desk().monitor(monitorA).at(1920, 56, huge).unplugged().monitor(monitorB);
    }
};

TEST_F(UnseenTest, WhatNobodySeesIsNotShown) {
    EXPECT_TRUE(isNothingShown(withGhost()));
    EXPECT_TRUE(isNothingShown(Desk().monitor(monitorA)));
    EXPECT_FALSE(isNothingShown(withGhost().at(0, 0)));
}

TEST_F(UnseenTest, ItTakesNobodysPlace) {
    const Shown was{fullHd, {1920, 0, 1920, 1080}, rotate0};
    const Memory memory{
        seen(monitorB, Desk().monitor(monitorC).at(0, 0).monitor(monitorB).at(1920, 0))};

    EXPECT_EQ(waysBack(withGhost().monitor(monitorC).at(0, 0), monitorB, memory).front(),
              asItWas(was));
    EXPECT_EQ(waysBack(withGhost().monitor(monitorC).at(0, 0), monitorB, {}).front(),
              anew(1920, 0));
    EXPECT_EQ(waysBack(withGhost(), monitorB, {}).front(), anew(0, 0));
}

TEST_F(UnseenTest, TheOnlyMonitorLeftStandsAtTheOrigin) {
    const Memory memory{
        seen(monitorB, Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0, small))};

    EXPECT_EQ(waysBack(withGhost(), monitorB, memory).front(),
              asItWas({small, {0, 0, 1280, 1024}, rotate0}));
    EXPECT_EQ(waysBack(Desk().monitor(monitorA).monitor(monitorB), monitorB, memory).front(),
              asItWas({small, {1920, 0, 1280, 1024}, rotate0}))
        << "the other may come on too, where it was";
}

TEST_F(UnseenTest, ItIsNobodysMirrorAndNeverBecomesPrimary) {
    const Desk desk = withGhost().at(1920, 56).monitor(monitorC).at(5760, 0).primaryIs(monitorB);

    EXPECT_THAT(seen(monitorB, desk).mirrors, IsEmpty());
    EXPECT_EQ(nextPrimary(desk, monitorB), monitorC);
}

}  // namespace
}  // namespace tavrel::layout
