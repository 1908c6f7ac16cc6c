// Which displays an enumeration takes to be there, and how it asks.
#include <gmock/gmock.h>

#include <numeric>

#include "display/DisplayError.h"
#include "tests/display/DisplayIntegrationFixture.h"

namespace tavrel {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

using PrivateListTest = DisplayIntegrationTest;
using PublicListTest = DisplayIntegrationTest;

const std::string privateCall = "private list: room 64, count 0";
const std::string countCall = "public list: room 0, count 0";

std::vector<DisplayID> upTo(DisplayID last) {
    std::vector<DisplayID> ids(last);
    std::iota(ids.begin(), ids.end(), 1);
    return ids;
}

TEST_F(PrivateListTest, IsAskedFor64AndTheMergeAndTheStatesFollow) {
    connect({5, 3});

    EXPECT_THAT(fetchIDs(), ElementsAre(3, 5));
    EXPECT_THAT(server_.takeCalls(),
                ElementsAre(privateCall, "builtIn 5", "online 5", "builtIn 3", "online 3",
                            // The merge, in the order of the list.
                            "builtIn 5", "builtIn 3",
                            // The states, in the order of the merge.
                            "active 3", "active 5"));
}

TEST_F(PrivateListTest, TheFirstSignOfADisplayDecides) {
    server_.privateList = RecordingServer::list({1, 2, 3, 4, 5});
    server_.facts = {{1, {.builtIn = true, .online = true}},
                     {2, {.online = true, .vendor = 9}},
                     {3, {.vendor = 9, .model = 9}},
                     {4, {.model = 9, .serial = 9}},
                     {5, {.serial = 9}}};

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 2, 3, 4, 5));
    auto calls = server_.takeCalls();
    calls.resize(16);
    EXPECT_THAT(
        calls, ElementsAre(privateCall,              //
                           "builtIn 1",              //
                           "builtIn 2", "online 2",  //
                           "builtIn 3", "online 3", "vendor 3", "builtIn 4", "online 4", "vendor 4",
                           "model 4", "builtIn 5", "online 5", "vendor 5", "model 5", "serial 5"));
}

TEST_F(PrivateListTest, EntryWithoutAnySignOfADisplayIsSkipped) {
    connect({7});
    server_.privateList = RecordingServer::list({8, 7});

    EXPECT_THAT(fetchIDs(), ElementsAre(7));
}

TEST_F(PrivateListTest, IdentifierZeroIsSkippedWithoutAQuestion) {
    connect({7});
    server_.facts[0] = {.builtIn = true, .online = true, .vendor = 1};
    server_.privateList = RecordingServer::list({0, 7, 0});

    EXPECT_THAT(fetchIDs(), ElementsAre(7));
    EXPECT_THAT(server_.takeCalls(), Not(Contains("builtIn 0")));
}

TEST_F(PrivateListTest, EntriesBeyondTheCountAreNotTaken) {
    connect({1, 2, 3});
    server_.privateList.count = 2;

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 2));
}

TEST_F(PrivateListTest, OnlyTheFirst64AreConsidered) {
    connect(upTo(70));
    std::vector<DisplayID> fetched = fetchIDs();
    std::sort(fetched.begin(), fetched.end());

    EXPECT_EQ(fetched, upTo(64));
}

TEST_F(PrivateListTest, CountAboveTheRoomIsClampedToIt) {
    connect(upTo(64));
    server_.privateList.count = 4294967295;

    EXPECT_EQ(fetch().size(), 64U);
}

TEST_F(PrivateListTest, SuccessLeavesThePublicListAlone) {
    connect({1});
    server_.publicCount = RecordingServer::failure(1000);

    EXPECT_THAT(fetchIDs(), ElementsAre(1));
    EXPECT_THAT(server_.takeCalls(), Not(Contains(countCall)));
}

TEST_F(PrivateListTest, FailureOfAnyKindSelectsThePublicList) {
    for (const ServerStatus status : {1006, 1000, -1}) {
        RecordingServer server;
        server.privateList = RecordingServer::failure(status);
        server.privateList.displays = {9};
        server.publicCount = RecordingServer::count(1);
        server.publicList = RecordingServer::list({4});

        const auto displays = DisplayIntegration::fetchDisplays(server, server, store_, clock_);
        ASSERT_EQ(displays.size(), 1U);
        EXPECT_EQ(displays.front().displayID(), 4U);
        EXPECT_THAT(server.takeCalls(),
                    ElementsAre(privateCall, countCall, "public list: room 1, count 1", "builtIn 4",
                                "active 4"));
    }
}

TEST_F(PrivateListTest, PhantomsAloneSelectThePublicList) {
    server_.privateList = RecordingServer::list({0, 8});
    server_.publicCount = RecordingServer::count(1);
    server_.publicList = RecordingServer::list({4});

    EXPECT_THAT(fetchIDs(), ElementsAre(4));
}

TEST_F(PrivateListTest, EmptyListSelectsThePublicList) {
    server_.privateList = RecordingServer::list({});
    server_.publicCount = RecordingServer::count(1);
    server_.publicList = RecordingServer::list({4});

    EXPECT_THAT(fetchIDs(), ElementsAre(4));
}

TEST_F(PublicListTest, IsTakenAsItIsWithPhantomsAndZeros) {
    server_.publicCount = RecordingServer::count(3);
    server_.publicList = RecordingServer::list({6, 0, 2});

    EXPECT_THAT(fetchIDs(), ElementsAre(0, 2, 6));
    EXPECT_THAT(server_.takeCalls(),
                ElementsAre(privateCall, countCall, "public list: room 3, count 3", "builtIn 6",
                            "builtIn 0", "builtIn 2", "active 0", "active 2", "active 6"));
}

TEST_F(PublicListTest, MoreThanAskedForIsClampedToTheRoom) {
    server_.publicCount = RecordingServer::count(2);
    server_.publicList = RecordingServer::list({1, 2, 3, 4});

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 2));
}

TEST_F(PublicListTest, FewerThanAnnouncedAreTakenWithoutTheRest) {
    server_.publicCount = RecordingServer::count(5);
    server_.publicList = RecordingServer::list({1, 2});

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 2));
}

TEST_F(PublicListTest, HasNoLimitOf64) {
    server_.publicCount = RecordingServer::count(70);
    server_.publicList = RecordingServer::list(upTo(70));

    EXPECT_EQ(fetch().size(), 70U);
}

TEST_F(PublicListTest, EmptyOneIsAskedTwiceAndGivesNoDisplays) {
    server_.publicList = RecordingServer::count(3);

    EXPECT_THAT(fetchIDs(), IsEmpty());
    EXPECT_THAT(server_.takeCalls(),
                ElementsAre(privateCall, countCall, "public list: room 0, count 0"));
}

TEST_F(PublicListTest, FailureOfEitherCallThrowsAndLeavesTheRegistryUntouched) {
    remember({5});
    const std::size_t reads = store_.reads();
    const std::size_t writes = store_.writes();
    for (const bool firstFails : {true, false}) {
        RecordingServer server;
        server.publicCount =
            firstFails ? RecordingServer::failure(1000) : RecordingServer::count(1);
        server.publicList = firstFails ? RecordingServer::list({4}) : RecordingServer::failure(-7);
        try {
            DisplayIntegration::fetchDisplays(server, server, store_, clock_);
            ADD_FAILURE() << "nothing was thrown";
        } catch (const DisplayError& error) {
            EXPECT_EQ(error.reason(), DisplayError::Reason::invalidDisplayList);
        }
        EXPECT_EQ(server.takeCalls().size(), firstFails ? 2U : 3U);
    }
    EXPECT_EQ(store_.reads(), reads);
    EXPECT_EQ(store_.writes(), writes);
}

}  // namespace
}  // namespace tavrel
