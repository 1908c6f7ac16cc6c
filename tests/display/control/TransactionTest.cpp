// Switching and listing in a process that has both entry points.
#include <dlfcn.h>
#include <gmock/gmock.h>

#include "display/control/DisplayControl.h"
#include "tests/display/control/StandIns.h"

namespace tavrel {
namespace {

using standIns::state;
using testing::ElementsAre;

class DisplayControlTransaction : public testing::Test {
protected:
    DisplayControlTransaction() { state() = {}; }
};

using DisplayControlList = DisplayControlTransaction;

TEST_F(DisplayControlTransaction, EnablesInATransactionThatIsCommittedPermanently) {
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), 0);
    EXPECT_THAT(state().calls,
                ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 7, 1)",
                            "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransaction, DisablesInATransactionThatIsCommittedPermanently) {
    EXPECT_EQ(DCTLSetDisplayEnabled(4294967295, false), 0);
    EXPECT_THAT(
        state().calls,
        ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 4294967295, 0)",
                    "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransaction, EachDisplayGetsATransactionOfItsOwn) {
    DCTLSetDisplayEnabled(1, false);
    DCTLSetDisplayEnabled(2, true);

    EXPECT_THAT(state().calls,
                ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 1, 0)",
                            "complete(transaction, 2)", "begin(null)",
                            "process CGSConfigureDisplayEnabled(transaction, 2, 1)",
                            "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransaction, OneThatCannotBeginGivesItsStatusAndIsNotCancelled) {
    state().beginStatus = 1004;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, false), 1004);
    EXPECT_THAT(state().calls, ElementsAre("begin(null)"));
}

TEST_F(DisplayControlTransaction, RefusalByTheEntryPointCancelsAndGivesItsStatus) {
    state().configureStatus = 1001;
    state().cancelStatus = 1000;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, false), 1001);
    EXPECT_THAT(state().calls,
                ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 7, 0)",
                            "cancel(transaction)"));
}

TEST_F(DisplayControlTransaction, FailedCommitGivesItsStatusAndIsNotCancelled) {
    state().completeStatus = 1003;

    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), 1003);
    EXPECT_THAT(state().calls,
                ElementsAre("begin(null)", "process CGSConfigureDisplayEnabled(transaction, 7, 1)",
                            "complete(transaction, 2)"));
}

TEST_F(DisplayControlTransaction, HandsBackNegativeStatuses) {
    state().completeStatus = -3;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -3);
    state().configureStatus = -2;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -2);
    state().beginStatus = -1;
    EXPECT_EQ(DCTLSetDisplayEnabled(7, true), -1);
}

TEST_F(DisplayControlTransaction, AskingWhetherDisplaysCanBeSwitchedSwitchesNothing) {
    EXPECT_TRUE(DCTLCanControlDisplays());
    EXPECT_THAT(state().calls, testing::IsEmpty());
}

TEST_F(DisplayControlList, PassesArgumentsAndResultsThrough) {
    state().displays = {3, 0, 4294967295};
    std::uint32_t displays[4] = {9, 9, 9, 9};
    std::uint32_t count = 0;

    EXPECT_EQ(DCTLGetDisplayList(4294967295, displays, &count), 0);
    EXPECT_THAT(state().calls, ElementsAre("process SLSGetDisplayList(4294967295, array, count)"));
    EXPECT_THAT(displays, ElementsAre(3, 0, 4294967295, 9));
    EXPECT_EQ(count, 3U);
}

TEST_F(DisplayControlList, PassesNullPointersThrough) {
    EXPECT_EQ(DCTLGetDisplayList(0, nullptr, nullptr), 0);
    EXPECT_THAT(state().calls, ElementsAre("process SLSGetDisplayList(0, null, null)"));
}

TEST_F(DisplayControlList, HandsBackTheEntryPointsStatus) {
    std::uint32_t count = 0;
    for (const std::int32_t status : {1000, -1}) {
        state().listStatus = status;
        EXPECT_EQ(DCTLGetDisplayList(0, nullptr, &count), status);
    }
}

TEST_F(DisplayControlList, HasNothingToDoWithTransactions) {
    state().beginStatus = 1004;
    std::uint32_t count = 0;

    EXPECT_EQ(DCTLGetDisplayList(0, nullptr, &count), 0);
    EXPECT_EQ(state().calls.size(), 1U);
}

TEST(DisplayControlNames, AreExportedAsTheyAreWritten) {
    for (const char* name :
         {"DCTLCanControlDisplays", "DCTLGetDisplayList", "DCTLSetDisplayEnabled",
          "resolveConfigureDisplayEnabled", "resolveGetDisplayList", "openSkyLight"}) {
        EXPECT_NE(dlsym(RTLD_DEFAULT, name), nullptr) << name;
    }
}

}  // namespace
}  // namespace tavrel
