#include "registry/DisplayRegistry.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <string>

#include "platform/simulated/SimulatedUserDefaults.h"
#include "platform/simulated/SimulatedWindowServer.h"
#include "tests/support/SettableClock.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr double day = 86'400;
constexpr double infinity = std::numeric_limits<double>::infinity();

class DisplayRegistryTest : public testing::Test {
protected:
    std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online) {
        return DisplayRegistry::merge(online, store_, *server_.now(), clock_);
    }
    std::vector<StoredDisplay> stored() { return DisplayRegistry::knownDisplays(store_); }
    void store(std::string_view text) { store_.setData(DisplayRegistry::storageKey, text); }

    void setBuiltIn(DisplayID id, bool builtIn = true) {
        server_.connect({.id = id, .builtIn = builtIn});
    }

    SimulatedUserDefaults store_;
    SimulatedWindowServer server_;
    SettableClock clock_;
    const WallTime start_ = clock_.time;
};

TEST_F(DisplayRegistryTest, IsEmptyWithoutAStoredValue) {
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(DisplayRegistryTest, FirstRunStoresBothDisplaysWithOneTimeAndListsTheBuiltInFirst) {
    setBuiltIn(7);
    const StoredDisplay panel{7, true, start_};
    const StoredDisplay monitor{3, false, start_};

    EXPECT_THAT(merge({3, 7}), ElementsAre(panel, monitor));
    EXPECT_THAT(stored(), UnorderedElementsAre(panel, monitor));
}

TEST_F(DisplayRegistryTest, TakesTheTimeOnceForAllRecords) {
    class RunningClock : public WallClock {
    public:
        WallTime now() override { return {time_ += 1}; }

    private:
        double time_ = 0;
    } clock;

    EXPECT_THAT(DisplayRegistry::merge({1, 2, 3}, store_, *server_.now(), clock),
                ElementsAre(StoredDisplay{1, false, {1}}, StoredDisplay{2, false, {1}},
                            StoredDisplay{3, false, {1}}));
}

TEST_F(DisplayRegistryTest, StoresUnderItsKeyInTheDocumentedForm) {
    setBuiltIn(1);
    clock_.time = {786'000'000.25};
    merge({1});

    EXPECT_EQ(store_.data("TavrelKnownDisplays"),
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

    EXPECT_EQ(store_.writes(), 1U);
    EXPECT_EQ(store_.data(DisplayRegistry::storageKey), "not a list");
}

TEST_F(DisplayRegistryTest, OfflineDisplaySeen29DaysAgoIsKept) {
    merge({1});
    clock_.time = start_ + 29 * day;

    const StoredDisplay remembered{1, false, start_};
    const StoredDisplay online{2, false, clock_.time};
    EXPECT_THAT(merge({2}), ElementsAre(remembered, online));
    EXPECT_THAT(stored(), UnorderedElementsAre(remembered, online));
}

TEST_F(DisplayRegistryTest, OfflineDisplaySeen31DaysAgoIsDroppedFromResultAndStore) {
    merge({1});
    clock_.time = start_ + 31 * day;

    const StoredDisplay online{2, false, clock_.time};
    EXPECT_THAT(merge({2}), ElementsAre(online));
    EXPECT_THAT(stored(), ElementsAre(online));
}

TEST_F(DisplayRegistryTest, OfflineDisplayExactly30DaysOldIsKept) {
    merge({1});
    clock_.time = start_ + 2'592'000;

    EXPECT_THAT(merge({}), ElementsAre(StoredDisplay{1, false, start_}));
}

TEST_F(DisplayRegistryTest, OfflineDisplayJustOver30DaysOldIsDropped) {
    merge({1});
    clock_.time = {std::nextafter((start_ + 2'592'000).sinceReferenceDate, infinity)};

    EXPECT_THAT(merge({}), IsEmpty());
    EXPECT_EQ(store_.data(DisplayRegistry::storageKey), "[]");
}

TEST_F(DisplayRegistryTest, OnlineDisplayIsKeptAndRefreshedHoweverOldItsRecord) {
    merge({1});
    clock_.time = start_ + 400 * day;

    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, clock_.time}));
}

TEST_F(DisplayRegistryTest, RecordFromTheFutureIsKeptWithItsTime) {
    merge({1});
    clock_.time = start_ + -365 * day;

    EXPECT_THAT(merge({}), ElementsAre(StoredDisplay{1, false, start_}));
}

TEST_F(DisplayRegistryTest, OnlineRecordFromTheFutureTakesTheClocksTime) {
    merge({1});
    clock_.time = start_ + -365 * day;

    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, clock_.time}));
}

TEST_F(DisplayRegistryTest, BuiltInAnswerIsRenewedOnlineAndKeptOffline) {
    setBuiltIn(1);
    merge({1});

    setBuiltIn(1, false);
    EXPECT_THAT(merge({}), ElementsAre(StoredDisplay{1, true, start_}));
    EXPECT_THAT(merge({1}), ElementsAre(StoredDisplay{1, false, start_}));
}

TEST_F(DisplayRegistryTest, OfflineDisplaysAreNotAskedAbout) {
    merge({1, 2});
    const auto before = server_.queries();
    merge({2});

    EXPECT_EQ(server_.queries(), before + 1);
}

TEST_F(DisplayRegistryTest, ResultIsOrderedBuiltInFirstThenByIdentifier) {
    setBuiltIn(9);
    const auto result = merge({7, 3, 9});

    EXPECT_THAT(result, ElementsAre(testing::Field(&StoredDisplay::id, 9),
                                    testing::Field(&StoredDisplay::id, 3),
                                    testing::Field(&StoredDisplay::id, 7)));
}

TEST_F(DisplayRegistryTest, IdentifiersAreOrderedAsUnsignedNumbers) {
    const auto result = merge({0x80000000, 1});

    EXPECT_THAT(result, ElementsAre(testing::Field(&StoredDisplay::id, 1),
                                    testing::Field(&StoredDisplay::id, 0x80000000)));
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
    EXPECT_THAT(merge({4, 4, 4}), ElementsAre(StoredDisplay{4, false, start_}));
    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{4, false, start_}));
}

TEST_F(DisplayRegistryTest, AnyIdentifierCanBeOnlineAlsoZero) {
    EXPECT_THAT(merge({0, 4294967295}), ElementsAre(StoredDisplay{0, false, start_},
                                                    StoredDisplay{4294967295, false, start_}));
}

TEST_F(DisplayRegistryTest, MalformedValueIsEmptyAndTheNextMergeReplacesIt) {
    for (const std::string_view text :
         {"not JSON", R"([{"id":1,"isBuiltIn":true}])",
          R"([{"id":1,"isBuiltIn":true,"lastSeenAt":800000000},{"id":2,"isBuiltIn":true}])"}) {
        store(text);
        EXPECT_THAT(stored(), IsEmpty()) << text;

        const StoredDisplay online{5, false, start_};
        EXPECT_THAT(merge({5}), ElementsAre(online)) << text;
        EXPECT_THAT(stored(), ElementsAre(online)) << text;
    }
}

TEST_F(DisplayRegistryTest, NothingOnlineAndNothingStoredStoresAnEmptyList) {
    EXPECT_THAT(merge({}), IsEmpty());
    EXPECT_EQ(store_.data(DisplayRegistry::storageKey), "[]");
}

TEST_F(DisplayRegistryTest, TimeThatCannotBeEncodedLeavesTheStoreAndGivesTheResult) {
    merge({1});
    const auto before = store_.data(DisplayRegistry::storageKey);
    const std::size_t writes = store_.writes();

    clock_.time = {infinity};
    EXPECT_THAT(merge({2}), ElementsAre(StoredDisplay{2, false, {infinity}}));
    clock_.time = {std::nan("")};
    EXPECT_THAT(merge({2}), ElementsAre(testing::Field(&StoredDisplay::id, 2)));

    EXPECT_EQ(store_.data(DisplayRegistry::storageKey), before);
    EXPECT_EQ(store_.writes(), writes);
}

TEST_F(DisplayRegistryTest, StoreThatRefusesToWriteGivesTheResultAllTheSame) {
    merge({1});
    store_.setWritable(false);

    EXPECT_THAT(merge({2}),
                ElementsAre(StoredDisplay{1, false, start_}, StoredDisplay{2, false, start_}));
    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{1, false, start_}));
}

TEST_F(DisplayRegistryTest, OfTwoMergesAtOnceTheLastWriterWins) {
    /// Runs another merge between this one's reading and writing.
    class Interleaving : public UserDefaults {
    public:
        Interleaving(UserDefaults& inner, std::function<void()> other)
            : inner_(inner), other_(std::move(other)) {}
        std::optional<std::string> data(std::string_view key) override { return inner_.data(key); }
        bool setData(std::string_view key, std::string_view bytes) override {
            other_();
            return inner_.setData(key, bytes);
        }

    private:
        UserDefaults& inner_;
        std::function<void()> other_;
    };
    Interleaving store(store_, [&] { merge({1, 2}); });

    DisplayRegistry::merge({3}, store, *server_.now(), clock_);

    EXPECT_THAT(stored(), ElementsAre(StoredDisplay{3, false, start_}));
}

}  // namespace
}  // namespace tavrel
