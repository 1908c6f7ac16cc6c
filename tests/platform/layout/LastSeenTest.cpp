#include "platform/layout/LastSeen.h"

#include "platform/layout/LayoutPolicy.h"
#include "tests/platform/layout/Desk.h"

namespace tavrel::layout {
namespace {

using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;

class LastSeenTest : public testing::Test {
protected:
    void see(const Desk& seen) {
        lastSeen.see(seen, [](const Output& output) {
            return R"({"connector":")" + output.identity.connector + R"("})";
        });
    }

    /// Brings them back in the order given, each the best way, and returns where each is then.
    std::vector<Area> placesAfterReturn(Layout layout, const std::vector<DisplayID>& order) {
        for (const DisplayID display : order) {
            const Shown shown =
                waysBack(layout, display, lastSeen.completed({}, display)).front().shown;
            for (Output& output : layout.outputs) {
                if (output.display == display) {
                    output.shown = shown;
                }
            }
        }
        std::vector<Area> places;
        for (const Output& output : layout.outputs) {
            places.push_back(output.shown.value_or(Shown{}).area);
        }
        return places;
    }

    LastSeen lastSeen;
    /// C left of A left of B.
    const Desk desk =
        Desk().monitor(monitorA).at(1280, 0).monitor(monitorB).at(3200, 40).monitor(monitorC).at(
            0, 0, small);
    const Desk allOff = Desk().monitor(monitorA).monitor(monitorB).monitor(monitorC);
};

TEST_F(LastSeenTest, WhatOthersSwitchedOffComesBackInItsPlaceInWhateverOrder) {
    see(desk);
    see(allOff);

    for (const auto& order :
         {std::vector{monitorA, monitorB, monitorC}, std::vector{monitorC, monitorB, monitorA},
          std::vector{monitorB, monitorC, monitorA}}) {
        EXPECT_THAT(placesAfterReturn(allOff, order),
                    ElementsAre(Area{1280, 0, 1920, 1080}, Area{3200, 40, 1920, 1080},
                                Area{0, 0, 1280, 1024}));
    }
}

TEST_F(LastSeenTest, SoDoesWhatTheySwitchedOffOneAfterTheOther) {
    see(desk);
    see(Desk().monitor(monitorA).at(1280, 0).monitor(monitorB).at(3200, 40).monitor(monitorC));
    see(Desk().monitor(monitorA).monitor(monitorB).at(3200, 40).monitor(monitorC));
    see(allOff);

    EXPECT_THAT(
        placesAfterReturn(allOff, {monitorA, monitorB, monitorC}),
        ElementsAre(Area{1280, 0, 1920, 1080}, Area{3200, 40, 1920, 1080}, Area{0, 0, 1280, 1024}));
}

TEST_F(LastSeenTest, TheLatestSightCounts) {
    see(Desk().monitor(monitorA).at(0, 0, small));
    see(Desk().monitor(monitorA).at(0, 0, fullHd));

    EXPECT_THAT(lastSeen.completed({}, monitorA),
                ElementsAre(Field(&RememberedOutput::mode, fullHd)));
}

TEST_F(LastSeenTest, WhatIsRememberedOfASwitchOffComesFirst) {
    see(desk);
    const Memory remembered{
        describe(Desk().monitor(monitorA).at(0, 0).monitor(monitorC).at(1920, 0), monitorC, {})};

    EXPECT_EQ(lastSeen.completed(remembered, monitorC), remembered);
    EXPECT_THAT(lastSeen.completed(remembered, monitorB),
                ElementsAre(remembered.front(), Field(&RememberedOutput::display, monitorB)));
}

TEST_F(LastSeenTest, OnlyWhatCouldBeSeenIsNoted) {
    see(Desk().monitor(monitorA).at(0, 0).monitor(monitorB).at(1920, 0).unplugged().monitor(
        monitorC));

    EXPECT_THAT(lastSeen.completed({}, monitorB), IsEmpty());
    EXPECT_THAT(lastSeen.completed({}, monitorC), IsEmpty());
}

TEST_F(LastSeenTest, WhatOnlyTheWindowServerKnowsIsKeptWithIt) {
    see(desk);

    EXPECT_THAT(lastSeen.completed({}, monitorB),
                ElementsAre(Field(&RememberedOutput::notes, R"({"connector":"B"})")));
}

TEST_F(LastSeenTest, ThePrimaryRoleIsWhoseItWasLast) {
    see(desk);
    EXPECT_TRUE(lastSeen.completed({}, monitorA).front().primary);

    // A is switched off, and the role given to B.
    see(Desk().monitor(monitorA).monitor(monitorB).at(3200, 40).monitor(monitorC).primaryIs(
        monitorB));

    EXPECT_FALSE(lastSeen.completed({}, monitorA).front().primary);
    EXPECT_TRUE(lastSeen.completed({}, monitorB).front().primary);
    EXPECT_FALSE(lastSeen.completed({}, monitorB).front().primaryOnLoan);
}

TEST_F(LastSeenTest, TheRoleIsNotLostWhereItOnlyMovesOnBecauseItsOwnerGoesOff) {
    see(Desk(desk).keepingPrimaryOn());

    see(Desk()
            .keepingPrimaryOn()
            .monitor(monitorA)
            .monitor(monitorB)
            .at(3200, 40)
            .monitor(monitorC)
            .primaryIs(monitorB));

    EXPECT_TRUE(lastSeen.completed({}, monitorA).front().primary);
    EXPECT_FALSE(lastSeen.completed({}, monitorA).front().primaryOnLoan);
    EXPECT_TRUE(lastSeen.completed({}, monitorB).front().primaryOnLoan);

    see(Desk(desk).keepingPrimaryOn().primaryIs(monitorB));
    EXPECT_FALSE(lastSeen.completed({}, monitorA).front().primary) << "it is on, and given up";
}

TEST_F(LastSeenTest, OfVeryManyTheOldestAreForgotten) {
    for (DisplayID display = 1; display <= 65; ++display) {
        see(Desk().monitor(display).at(0, 0));
    }

    EXPECT_THAT(lastSeen.completed({}, 1), IsEmpty());
    EXPECT_THAT(lastSeen.completed({}, 2), testing::SizeIs(1));
    EXPECT_THAT(lastSeen.completed({}, 65), testing::SizeIs(1));
}

}  // namespace
}  // namespace tavrel::layout
