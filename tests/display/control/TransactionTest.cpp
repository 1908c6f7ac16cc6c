// Switching and listing in a process that has both entry points.
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "tests/display/control/StandIns.h"

namespace tavrel {
namespace {

using standIns::state;
using testing::ElementsAre;

class DisplayControlTransactionTest : public testing::Test {
protected:
    DisplayControlTransactionTest() {
        state() = {};
        state().offer.process = {"CGSConfigureDisplayEnabled", "SLSGetDisplayList"};
    }

    static constexpr const char* switchesOff =
        "process CGSConfigureDisplayEnabled(transaction, 7, 0)";
};

using DisplayControlListTest = DisplayControlTransactionTest;

TEST_F(DisplayControlTransactionTest, SwitchesEachDisplayInAPermanentTransactionOfItsOwn) {
    EXPECT_EQ(DCTLSetDisplayEnabled(4294967295, false), 0);
    EXPECT_EQ(DCTLSetDisplayEnabled(2, true), 0);

    EXPECT_THAT(
        state().calls,
        ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 4294967295, 0)",
                    "complete(transaction, 2)", "begin(null)",
                    "process CGSConfigureDisplayEnabled(transaction, 2, 1)",
                    "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransactionTest, GivesTheStatusOfOneThatCannotBeginAndDoesNotCancelIt) {
    state().beginStatus = 1004;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, false), 1004);
    EXPECT_THAT(state().calls, ElementsAre("begin(null)"));
}

TEST_F(DisplayControlTransactionTest, CancelsWhatTheEntryPointRefusesAndGivesItsStatus) {
    state().configureStatus = 1001;
    state().cancelStatus = 1000;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, false), 1001);
    EXPECT_THAT(state().calls, ElementsAre("begin(null)", switchesOff, "cancel(transaction)"));
}

TEST_F(DisplayControlTransactionTest, GivesTheStatusOfAFailedCommitAndDoesNotCancelIt) {
    state().completeStatus = 1003;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, false), 1003);
    EXPECT_THAT(state().calls, ElementsAre("begin(null)", switchesOff, "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransactionTest, HandsBackNegativeStatusesOfEachStep) {
    state().completeStatus = -3;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -3);
    state().configureStatus = -2;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -2);
    state().beginStatus = -1;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -1);
}

TEST_F(DisplayControlListTest, PassesArgumentsAndResultsThroughWithoutATransaction) {
    state().displays = {3, 0, 4294967295};
    std::uint32_t displays[4] = {9, 9, 9, 9};
    std::uint32_t count = 0;

    EXPECT_EQ(DCTLGetDisplayList(4294967295, displays, &count), 0);
    EXPECT_THAT(state().calls, ElementsAre("process SLSGetDisplayList(4294967295, array, count)"));
    EXPECT_THAT(displays, ElementsAre(3, 0, 4294967295, 9));
    EXPECT_EQ(count, 3U);
}

TEST_F(DisplayControlListTest, PassesNullPointersThrough) {
    EXPECT_EQ(DCTLGetDisplayList(0, nullptr, nullptr), 0);
    EXPECT_THAT(state().calls, ElementsAre("process SLSGetDisplayList(0, null, null)"));
}

TEST_F(DisplayControlListTest, HandsBackTheEntryPointsStatus) {
    for (const std::int32_t status : {1000, -1}) {
        state().listStatus = status;

        std::uint32_t count = 0;
        EXPECT_EQ(DCTLGetDisplayList(0, nullptr, &count), status);
    }
}

}  // namespace
}  // namespace tavrel
