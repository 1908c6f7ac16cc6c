#include "registry/DisplayRegistry.h"

#include <gmock/gmock.h>

#include <cmath>
#include <csignal>
#include <functional>
#include <limits>
#include <string>

#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/support/CoverageDump.h"
#include "tests/support/SettableClock.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// The stored form of external displays.
std::string listOf(const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids) {
        text += (text.empty() ? "[" : ",") + (R"({"id":)" + id) +
                R"(,"isBuiltIn":false,"lastSeenAt":800000000})";
    }
    return text + "]";
}

class DisplayRegistryTest : public testing::Test {
protected:
    static constexpr double day = 86'400;
    static constexpr double infinity = std::numeric_limits<double>::infinity();

    std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online) {
        return DisplayRegistry::merge(online, userDefaults, *server.now(), clock);
    }
    std::vector<StoredDisplay> stored() { return DisplayRegistry::knownDisplays(userDefaults); }
    void store(std::string_view text) { userDefaults.setData(DisplayRegistry::storageKey, text); }

    void setBuiltIn(DisplayID id, bool builtIn = true) {
        server.connect({.id = id, .builtIn = builtIn});
    }

    SimulatedUserDefaults userDefaults;
    SimulatedWindowServer server;
    SettableClock clock;
    const WallTime startTime = clock.time;
};

TEST_F(DisplayRegistryTest, IsEmptyWithoutAStoredValue) {
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(DisplayRegistryTest, FirstMergeStoresEveryOnlineDisplayAndReturnsTheBuiltInFirst) {
    setBuiltIn(7);
    const StoredDisplay panel{7, true, startTime};
    const StoredDisplay monitor{3, false, startTime};

    EXPECT_THAT(merge({3, 7}), ElementsAre(panel, monitor));
    EXPECT_THAT(stored(), UnorderedElementsAre(panel, monitor));
}

TEST_F(DisplayRegistryTest, MergeAsksTheClockOnceForAllRecords) {
    struct RunningClock : WallClock {
        WallTime now() override { return {time += 1}; }
        double time = 0;
    } runningClock;

    EXPECT_THAT(DisplayRegistry::merge({1, 2, 3}, userDefaults, *server.now(), runningClock),
                ElementsAre(StoredDisplay{1, false, {1}}, StoredDisplay{2, false, {1}},
                            StoredDisplay{3, false, {1}}));
}

TEST_F(DisplayRegistryTest, StoresUnderItsKeyInTheDocumentedForm) {
    setBuiltIn(1);
    clock.time = {786'000'000.25};

    merge({1});

    EXPECT_EQ(userDefaults.data("TavrelKnownDisplays"),
              R"([{"id":1,"isBuiltIn":true,"lastSeenAt":786000000.25}])");
}

TEST_F(DisplayRegistryTest, KnownDisplaysAreInStoredOrder) {
    store(
        R"([{"id":9,"isBuiltIn":false,"lastSeenAt":1},{"id":2,"isBuiltIn":true,"lastSeenAt":2}])");

    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{9, false, {1}}, StoredDisplay{2, true, {2}}));
}

TEST_F(DisplayRegistryTest, ReadingWritesNothing) {
    store("not a list");

    stored();

    EXPECT_EQ(userDefaults.writes(), 1U);
    EXPECT_EQ(userDefaults.data(DisplayRegistry::storageKey), "not a list");
}

TEST_F(DisplayRegistryTest, OfflineDisplaySeenExactly30DaysAgoIsKeptWithItsTime) {
    merge({1});
    clock.time = startTime + 2'592'000;
    const StoredDisplay remembered{1, false, startTime};
    const StoredDisplay online{2, false, clock.time};

    EXPECT_THAT(merge({2}), ElementsAre(remembered, online));
    EXPECT_THAT(stored(), UnorderedElementsAre(remembered, online));
}

TEST_F(DisplayRegistryTest, OfflineDisplaySeenLongerAgoIsDroppedFromResultAndStore) {
    merge({1});
    clock.time = {std::nextafter((startTime + 2'592'000).sinceReferenceDate, infinity)};
    const StoredDisplay online{2, false, clock.time};

    EXPECT_THAT(merge({2}), ElementsAre(online));
    EXPECT_THAT(stored(), ElementsAre(online));
}

TEST_F(DisplayRegistryTest, OnlineDisplayIsKeptAndRefreshedHoweverOldItsRecord) {
    merge({1});
    clock.time = startTime + 400 * day;

    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, clock.time}));
}

TEST_F(DisplayRegistryTest, RecordFromTheFutureKeepsItsTimeUntilTheDisplayIsOnline) {
    merge({1});
    clock.time = startTime + -365 * day;

    EXPECT_THAT(merge({}), ElementsAre(StoredDisplay{1, false, startTime}));
    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, clock.time}));
}

TEST_F(DisplayRegistryTest, BuiltInAnswerIsRenewedOnlineAndKeptOffline) {
    setBuiltIn(1);
    merge({1});
    setBuiltIn(1, false);

    EXPECT_THAT(merge({}), ElementsAre(StoredDisplay{1, true, startTime}));
    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, startTime}));
}

TEST_F(DisplayRegistryTest, OfflineDisplaysAreNotAskedAbout) {
    merge({1, 2});
    const auto before = server.queries();

    merge({2});

    EXPECT_EQ(server.queries(), before + 1);
}

TEST_F(DisplayRegistryTest, ResultIsOrderedBuiltInFirstThenByUnsignedIdentifier) {
    setBuiltIn(9);
    const auto hasID = [](DisplayID id) { return testing::Field(&StoredDisplay::id, id); };

    EXPECT_THAT(merge({0x80000000, 7, 3, 9}),
                ElementsAre(hasID(9), hasID(3), hasID(7), hasID(0x80000000)));
}

TEST_F(DisplayRegistryTest, ComparesBuiltInBeforeIdentifier) {
    const StoredDisplay panel{9, true, {2}};
    const StoredDisplay low{1, false, {1}};
    const StoredDisplay high{2, false, {0}};

    EXPECT_TRUE(DisplayRegistry::comesBefore(panel, low));
    EXPECT_FALSE(DisplayRegistry::comesBefore(low, panel));
    EXPECT_TRUE(DisplayRegistry::comesBefore(low, high));
    EXPECT_FALSE(DisplayRegistry::comesBefore(high, low));
    EXPECT_FALSE(DisplayRegistry::comesBefore(low, low));
}

TEST_F(DisplayRegistryTest, RepeatedOnlineIdentifierIsOneRecord) {
    EXPECT_THAT(merge({4, 4, 4}), ElementsAre(StoredDisplay{4, false, startTime}));
    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{4, false, startTime}));
}

TEST_F(DisplayRegistryTest, AnyIdentifierCanBeOnlineAlsoZero) {
    EXPECT_THAT(merge({0, 4294967295}), ElementsAre(StoredDisplay{0, false, startTime},
                                                    StoredDisplay{4294967295, false, startTime}));
}

TEST_F(DisplayRegistryTest, MalformedValueIsEmptyAndTheNextMergeReplacesIt) {
    const StoredDisplay online{5, false, startTime};
    for (const std::string_view text :
         {"not JSON", R"([{"id":1,"isBuiltIn":true}])",
          R"([{"id":1,"isBuiltIn":true,"lastSeenAt":800000000},{"id":2,"isBuiltIn":true}])"}) {
        store(text);

        EXPECT_THAT(stored(), IsEmpty()) << text;
        EXPECT_THAT(merge({5}), ElementsAre(online)) << text;
        EXPECT_THAT(stored(), ElementsAre(online)) << text;
    }
}

TEST_F(DisplayRegistryTest, NothingOnlineAndNothingStoredStoresAnEmptyList) {
    EXPECT_THAT(merge({}), IsEmpty());
    EXPECT_EQ(userDefaults.data(DisplayRegistry::storageKey), "[]");
}

TEST_F(DisplayRegistryTest, TimeThatCannotBeEncodedLeavesTheStoreAndGivesTheResult) {
    merge({1});
    const auto before = userDefaults.data(DisplayRegistry::storageKey);
    const std::size_t writes = userDefaults.writes();

    clock.time = {infinity};
    EXPECT_THAT(merge({2}), ElementsAre(StoredDisplay{2, false, {infinity}}));
    clock.time = {std::nan("")};
    EXPECT_THAT(merge({2}), ElementsAre(testing::Field(&StoredDisplay::id, 2)));

    EXPECT_EQ(userDefaults.data(DisplayRegistry::storageKey), before);
    EXPECT_EQ(userDefaults.writes(), writes);
}

TEST_F(DisplayRegistryTest, StoreThatRefusesToWriteGivesTheResultAllTheSame) {
    merge({1});
    userDefaults.setWritable(false);

    EXPECT_THAT(merge({2}), ElementsAre(StoredDisplay{1, false, startTime},
                                        StoredDisplay{2, false, startTime}));
    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{1, false, startTime}));
}

TEST_F(DisplayRegistryTest, OfTwoMergesAtOnceTheLastWriterWins) {
    /// Runs another merge between this one's reading and writing.
    struct Interleaving : UserDefaults {
        Interleaving(UserDefaults& innerStore, std::function<void()> otherMerge)
            : inner(innerStore), other(std::move(otherMerge)) {}

        std::optional<std::string> data(std::string_view key) override { return inner.data(key); }
        bool setData(std::string_view key, std::string_view bytes) override {
            other();
            return inner.setData(key, bytes);
        }

        UserDefaults& inner;
        std::function<void()> other;
    } store(userDefaults, [&] { merge({1, 2}); });

    DisplayRegistry::merge({3}, store, *server.now(), clock);

    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{3, false, startTime}));
}

TEST_F(DisplayRegistryTest, ReadingAcceptsARepeatedIdentifier) {
    store(listOf({"7", "7"}));

    EXPECT_EQ(stored().size(), 2U);
}

class DisplayRegistryDeathTest : public DisplayRegistryTest {
protected:
    DisplayRegistryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    void mergeOver(const std::string& text) {
        keepCoverageOnAbort();
        store(text);
        merge({1});
    }
};

TEST_F(DisplayRegistryDeathTest, MergeOverARepeatedIdentifierStopsTheProcess) {
    EXPECT_EXIT(mergeOver(listOf({"2", "7", "7"})), testing::KilledBySignal(SIGABRT),
                testing::Eq("Duplicate values for key: '7'\n"));
    EXPECT_EXIT(mergeOver(listOf({"4294967295", "1", "4294967295"})),
                testing::KilledBySignal(SIGABRT),
                testing::Eq("Duplicate values for key: '4294967295'\n"));
}

}  // namespace
}  // namespace tavrel
