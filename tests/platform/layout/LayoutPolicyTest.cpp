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
    EXPECT_TRUE(isLastShown(Desk().monitor(A).at(0, 0), A));
    EXPECT_TRUE(isLastShown(Desk().monitor(A).at(0, 0).monitor(B), A));

    EXPECT_FALSE(isLastShown(Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0), A));
    EXPECT_FALSE(isLastShown(Desk().monitor(A).at(0, 0).monitor(B).at(0, 0), A)) << "a mirror";
}

TEST(LastShownTest, AnUnpluggedMonitorThatIsStillDrivenShowsNothing) {
    EXPECT_TRUE(isLastShown(Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0).unplugged(), A));
}

TEST(DescribeTest, TellsModePlaceAndRotation) {
    const Layout desk = Desk().monitor(A).at(0, 0).monitor(B).at(1920, 40, small, rotate90);

    const RememberedOutput was = seen(B, desk);

    EXPECT_EQ(was.display, B);
    EXPECT_EQ(was.mode, small);
    EXPECT_EQ(was.area, (Area{1920, 40, 1024, 1280}));
    EXPECT_EQ(was.rotation, rotate90);
    EXPECT_THAT(was.mirrors, IsEmpty());
    EXPECT_FALSE(was.primary);
    EXPECT_EQ(was.notes, "{}");
}

TEST(DescribeTest, NamesWhatShowsPartOfTheSamePictureAsMirrors) {
    const Layout desk = Desk().monitor(A).at(0, 0).monitor(B).at(1919, 1079).monitor(C).at(1920, 0);

    EXPECT_THAT(seen(A, desk).mirrors, ElementsAre(B));
    EXPECT_THAT(seen(B, desk).mirrors, ElementsAre(A, C));
    EXPECT_THAT(seen(C, desk).mirrors, ElementsAre(B)) << "A only touches it";
}

TEST(DescribeTest, ThePrimaryHasItsRoleOnLoanWhileTheOwnerIsOff) {
    const Layout before = Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0);
    const Memory memory{seen(A, before)};
    const Desk after = Desk().monitor(A).monitor(B).at(1920, 0).primaryIs(B);

    EXPECT_TRUE(seen(A, before).primary);
    EXPECT_FALSE(seen(A, before).primaryOnLoan);
    EXPECT_TRUE(describe(after, B, memory).primary);
    EXPECT_TRUE(describe(after, B, memory).primaryOnLoan);
}

TEST(DescribeTest, WithItsOwnerOnOrGoneTheRoleIsNotOnLoan) {
    const Memory memory{seen(A, Desk().monitor(A).at(0, 0))};

    const Layout on = Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0).primaryIs(B);
    const Layout gone = Desk().monitor(A).unplugged().monitor(B).at(1920, 0).primaryIs(B);

    EXPECT_FALSE(describe(on, B, memory).primaryOnLoan);
    EXPECT_FALSE(describe(gone, B, memory).primaryOnLoan);
}

TEST(NextPrimaryTest, IsTheOneNearestToTheOrigin) {
    EXPECT_EQ(
        nextPrimary(Desk().monitor(A).at(3840, 0).monitor(B).at(1920, 0).monitor(C).at(0, 500), A),
        C);
    EXPECT_EQ(nextPrimary(Desk().monitor(A).at(0, 0).monitor(C).at(0, 0).monitor(B).at(0, 0), A), B)
        << "by connector where they are in one place";
}

TEST(NextPrimaryTest, IsNobodyWhenTheRoleStaysOrNobodyIsLeft) {
    const Desk desk = Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0);

    EXPECT_EQ(nextPrimary(desk, B), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk(desk).primaryIs(std::nullopt), A), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk(desk).primaryIs(0), A), std::nullopt);
    EXPECT_EQ(nextPrimary(Desk().monitor(A).at(0, 0).monitor(B), A), std::nullopt);
}

/// A, the primary, went off first, then B, which had the role meanwhile; C has it now.
class RegainsPrimaryTest : public testing::Test {
protected:
    RegainsPrimaryTest() {
        memory.push_back(describe(Desk(desk).primaryIs(A), A, memory));
        desk = Desk().monitor(A).monitor(B).at(1920, 0).monitor(C).at(3840, 0).primaryIs(B);
        memory.push_back(describe(desk, B, memory));
        desk = Desk().monitor(A).monitor(B).monitor(C).at(3840, 0).primaryIs(C);
    }

    Desk desk = Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0).monitor(C).at(3840, 0);
    Memory memory;
};

TEST_F(RegainsPrimaryTest, TheOwnerDoes) {
    EXPECT_TRUE(regainsPrimary(desk, A, memory));
}

TEST_F(RegainsPrimaryTest, TheOneWithALoanDoesWhileTheOwnerIsOff) {
    EXPECT_TRUE(regainsPrimary(desk, B, memory));

    forget(memory, A);
    const Layout ownerIsBack = Desk().monitor(A).at(0, 0).monitor(B).monitor(C).at(3840, 0);
    EXPECT_FALSE(regainsPrimary(ownerIsBack, B, memory));
}

TEST_F(RegainsPrimaryTest, NobodyElseDoes) {
    EXPECT_FALSE(regainsPrimary(desk, C, memory));
    memory.push_back(seen(C, Desk().monitor(A).at(0, 0).monitor(C).at(3840, 0)));
    EXPECT_FALSE(regainsPrimary(desk, C, memory)) << "it was not primary";
}

TEST_F(RegainsPrimaryTest, NothingIsToBeDoneForThePrimaryOrWithoutAny) {
    EXPECT_FALSE(regainsPrimary(Desk(desk).primaryIs(A), A, memory));
    EXPECT_FALSE(regainsPrimary(Desk(desk).primaryIs(std::nullopt), A, memory));
    EXPECT_TRUE(regainsPrimary(Desk(desk).primaryIs(0), A, memory)) << "nobody is: it can be";
}

/// B, right of A, has been switched off.
class WaysBackTest : public testing::Test {
protected:
    const Shown was{small, {1920, 56, 1280, 1024}, rotate0};
    const Memory memory{seen(B, Desk().monitor(A).at(0, 0).monitor(B).at(1920, 56, small))};
};

TEST_F(WaysBackTest, BeginWithHowItWasAndEndAtTheRight) {
    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 0).monitor(B), B, memory),
                ElementsAre(asItWas(was), anew(1920, 0)));
}

TEST_F(WaysBackTest, KeepItTurnedWherePossible) {
    const Rotation rotation = rotate90 | reflectX;
    const Memory turned{
        seen(B, Desk().monitor(A).at(0, 0).monitor(B).at(1920, 0, fullHd, rotation))};

    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 30).monitor(B), B, turned),
                ElementsAre(asItWas({fullHd, {1920, 0, 1080, 1920}, rotation}),
                            anewTurned(1920, 30, rotation), anew(1920, 30)));
}

TEST_F(WaysBackTest, AreOnlyAnewForOneNeverSeenOn) {
    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 0).monitor(B).offering({small, fullHd}), B, {}),
                ElementsAre(anew(1920, 0, small)));
}

TEST_F(WaysBackTest, AreOnlyAnewWhenItsModeIsGone) {
    for (const Mode& other : {fullHd, Mode{1280, 1024, 75000}, Mode{1280, 1024, 60000, {1}}}) {
        EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 0).monitor(B).offering({other}), B, memory),
                    ElementsAre(anew(1920, 0, other)));
    }
}

TEST_F(WaysBackTest, AreOnlyAnewWhenItsPlaceIsTakenIfOnlyInPart) {
    EXPECT_THAT(waysBack(Desk().monitor(A).at(1920, 56, small).monitor(B), B, memory),
                ElementsAre(anew(3200, 56)));
    EXPECT_THAT(waysBack(Desk().monitor(A).at(3199, 1079).monitor(B), B, memory),
                ElementsAre(anew(5119, 1079)));
    EXPECT_THAT(waysBack(Desk().monitor(A).at(3200, 1080).monitor(B), B, memory),
                ElementsAre(asItWas(was), anew(5120, 1080)))
        << "a corner that only touches is no matter";
}

TEST_F(WaysBackTest, LeadOntoItsOldMirrors) {
    const Layout mirrored = Desk().monitor(A).at(0, 0).monitor(B).at(0, 0);

    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 0).monitor(B), B, {seen(B, mirrored)}),
                ElementsAre(asItWas({fullHd, {0, 0, 1920, 1080}, rotate0}), anew(1920, 0)));
}

TEST_F(WaysBackTest, LeadToTheOriginWhenNothingIsOn) {
    EXPECT_THAT(waysBack(Desk().monitor(A).monitor(B), B, {}), ElementsAre(anew(0, 0)));
}

TEST_F(WaysBackTest, AreLevelWithTheHigherOfTwoThatEndAtTheRight) {
    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 1080).monitor(C).at(0, 20).monitor(B), B, {}),
                ElementsAre(anew(1920, 20)));
}

TEST_F(WaysBackTest, StayWithinTheLargestDesktop) {
    const auto within = [](int width, int height) {
        return Desk().monitor(A).at(0, 0).monitor(B).limitedTo(width, height);
    };

    EXPECT_THAT(waysBack(within(3840, 1080), B, memory), ElementsAre(asItWas(was), anew(1920, 0)));
    EXPECT_THAT(waysBack(within(3839, 1080), B, memory), ElementsAre(asItWas(was)));
    EXPECT_THAT(waysBack(within(3840, 1079), B, memory), IsEmpty());
    EXPECT_THAT(waysBack(within(3199, 1080), B, memory), IsEmpty());
}

TEST_F(WaysBackTest, AreNoneWithoutAMode) {
    EXPECT_THAT(waysBack(Desk().monitor(A).at(0, 0).monitor(B).offering({}), B, memory), IsEmpty());
}

}  // namespace
}  // namespace tavrel::layout
