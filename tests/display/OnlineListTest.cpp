// Which displays an enumeration takes for connected, and what it asks the server.
#include <gmock/gmock.h>

#include <numeric>

#include "display/DisplayError.h"
#include "tests/display/DisplayIntegrationTest.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using DisplayIDs = std::vector<DisplayID>;
using AllDisplaysTest = DisplayIntegrationTest;
using OnlineDisplaysTest = DisplayIntegrationTest;

TEST_F(AllDisplaysTest, AreAskedForFirstThenComeTheMergeAndTheStates) {
    connect({5, 3});

    EXPECT_THAT(fetchIDs(), ElementsAre(3, 5));

    EXPECT_THAT(server.takeCalls(),
                ElementsAre("all", "builtIn 5", "online 5", "builtIn 3", "online 3",
                            // The merge, in the order of the list.
                            "builtIn 5", "builtIn 3",
                            // The states, in the order of the merge.
                            "active 3", "active 5"));
}

TEST_F(AllDisplaysTest, AreTakenForRealAtTheirFirstSign) {
    server.allDisplays = DisplayIDs{1, 2, 3, 4, 5};
    server.facts = {{1, {.builtIn = true, .online = true}},
                    {2, {.online = true, .vendor = 9}},
                    {3, {.vendor = 9, .model = 9}},
                    {4, {.model = 9, .serial = 9}},
                    {5, {.serial = 9}}};

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 2, 3, 4, 5));

    auto calls = server.takeCalls();
    calls.resize(16);
    EXPECT_THAT(
        calls, ElementsAre("all",                    //
                           "builtIn 1",              //
                           "builtIn 2", "online 2",  //
                           "builtIn 3", "online 3", "vendor 3", "builtIn 4", "online 4", "vendor 4",
                           "model 4", "builtIn 5", "online 5", "vendor 5", "model 5", "serial 5"));
}

TEST_F(AllDisplaysTest, WithoutAnySignOfADisplayAreSkipped) {
    connect({7});
    server.allDisplays = DisplayIDs{8, 7};

    EXPECT_THAT(fetchIDs(), ElementsAre(7));
}

TEST_F(AllDisplaysTest, WithIdentifierZeroAreSkippedWithoutAQuestion) {
    connect({7});
    server.facts[0] = {.builtIn = true, .online = true, .vendor = 1};
    server.allDisplays = DisplayIDs{0, 7, 0};

    EXPECT_THAT(fetchIDs(), ElementsAre(7));
    EXPECT_THAT(server.takeCalls(), Not(Contains("builtIn 0")));
}

TEST_F(AllDisplaysTest, LeaveTheOnlineListAloneWhenOneOfThemIsReal) {
    connect({1});
    server.onlineDisplays = std::nullopt;

    EXPECT_THAT(fetchIDs(), ElementsAre(1));
    EXPECT_THAT(server.takeCalls(), Not(Contains("online")));
}

TEST_F(AllDisplaysTest, GiveWayToTheOnlineListWhenMissingEmptyOrUnreal) {
    server.onlineDisplays = DisplayIDs{4};
    const std::vector<RecordingServer::DisplayList> useless{std::nullopt, DisplayIDs{},
                                                            DisplayIDs{0, 8}};
    for (const auto& all : useless) {
        server.allDisplays = all;

        EXPECT_THAT(fetchIDs(), ElementsAre(4));
    }
}

TEST_F(OnlineDisplaysTest, AreTakenAsTheyAreWithPhantomsAndZeros) {
    server.onlineDisplays = DisplayIDs{6, 0, 2};

    EXPECT_THAT(fetchIDs(), ElementsAre(0, 2, 6));
    EXPECT_THAT(server.takeCalls(), ElementsAre("all", "online", "builtIn 6", "builtIn 0",
                                                "builtIn 2", "active 0", "active 2", "active 6"));
}

TEST_F(OnlineDisplaysTest, AreTakenHoweverMany) {
    DisplayIDs many(70);
    std::iota(many.begin(), many.end(), 1);
    server.onlineDisplays = many;

    EXPECT_EQ(fetch().size(), 70U);
}

TEST_F(OnlineDisplaysTest, GiveNoDisplaysWhenThereAreNone) {
    EXPECT_THAT(fetchIDs(), IsEmpty());
}

TEST_F(OnlineDisplaysTest, ThrowWhenTheServerCannotSayAndLeaveTheRegistryUntouched) {
    remember({5});
    server.onlineDisplays = std::nullopt;
    const std::size_t reads = store.reads();
    const std::size_t writes = store.writes();

    try {
        fetch();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const DisplayError& error) {
        EXPECT_EQ(error.reason(), DisplayError::Reason::invalidDisplayList);
    }

    EXPECT_THAT(server.takeCalls(), ElementsAre("all", "online"));
    EXPECT_EQ(store.reads(), reads);
    EXPECT_EQ(store.writes(), writes);
}

}  // namespace
}  // namespace tavrel
