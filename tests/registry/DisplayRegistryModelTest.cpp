#include <gmock/gmock.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>

#include "registry/DisplayRegistry.h"
#include "registry/StoredDisplay.h"
#include "tests/simulated/SimulatedUserDefaults.h"
#include "tests/simulated/SimulatedWindowServer.h"
#include "tests/support/SettableClock.h"

namespace tavrel {
namespace {

constexpr DisplayID largestID = 8;
constexpr double secondsPerDay = 86'400;

/// What the registry promises, written as plainly as possible: a list that is searched
/// from front to back.
class NaiveRegistry {
public:
    std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online, double now,
                                     const std::vector<bool>& builtIn) {
        for (const DisplayID id : online) {
            forget([&](const StoredDisplay& record) { return record.id == id; });
            records.push_back({id, builtIn.at(id), {now}});
        }
        forget([&](const StoredDisplay& record) {
            const bool isOnline = std::count(online.begin(), online.end(), record.id) > 0;
            return !isOnline && record.lastSeenAt.sinceReferenceDate < now - 30 * secondsPerDay;
        });
        auto result = records;
        std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) {
            return std::tuple(!a.isBuiltIn, a.id) < std::tuple(!b.isBuiltIn, b.id);
        });
        return result;
    }

    std::vector<StoredDisplay> records;

private:
    template <class Condition>
    void forget(Condition condition) {
        records.erase(std::remove_if(records.begin(), records.end(), condition), records.end());
    }
};

/// The registry and its model under one random history.
class History {
public:
    explicit History(unsigned seed) : random_(seed) {}

    void step() {
        switch (draw(8)) {
            case 0:
                return flipABuiltInAnswer();
            case 1:
                return damageTheStore();
            case 2:
                return storeFromElsewhere();
            case 3:
                return storeRefusesOneMerge();
            default:
                return merge(/*isStored=*/true);
        }
    }

private:
    unsigned draw(unsigned count) { return static_cast<unsigned>(random_() % count); }

    /// By whole days, so that an age of exactly thirty days is common; sometimes backwards.
    void passTime() { clock_.time = clock_.time + (draw(40) - 4.0) * secondsPerDay; }

    void merge(bool isStored) {
        passTime();
        std::vector<DisplayID> online(draw(6));
        for (DisplayID& id : online) {
            id = draw(largestID + 1);
        }
        const NaiveRegistry before = model_;
        const auto expected = model_.merge(online, clock_.time.sinceReferenceDate, builtInAnswers_);

        EXPECT_EQ(DisplayRegistry::merge(online, store_, *server_.now(), clock_), expected);
        if (!isStored) {
            model_ = before;
        }
        EXPECT_THAT(DisplayRegistry::knownDisplays(store_),
                    testing::UnorderedElementsAreArray(model_.records));
    }

    void flipABuiltInAnswer() {
        const DisplayID id = draw(largestID + 1);
        builtInAnswers_[id] = !builtInAnswers_[id];
        server_.connect({.id = id, .builtIn = builtInAnswers_[id]});
    }

    void damageTheStore() {
        const auto text = store_.data(DisplayRegistry::storageKey);
        store_.setData(DisplayRegistry::storageKey, text.value_or("[]") + "]");
        model_.records.clear();
    }

    void storeFromElsewhere() {
        model_.records.clear();
        const DisplayID lowestID = draw(largestID + 1);
        for (DisplayID id = largestID; id > lowestID; --id) {
            model_.records.push_back(
                {id, draw(2) == 0, clock_.time + (draw(80) - 60.0) * secondsPerDay});
        }
        store_.setData(DisplayRegistry::storageKey, *StoredFormat::encode(model_.records));
    }

    void storeRefusesOneMerge() {
        store_.setWritable(false);
        merge(/*isStored=*/false);
        store_.setWritable(true);
    }

    std::mt19937_64 random_;
    SimulatedUserDefaults store_;
    SimulatedWindowServer server_;
    SettableClock clock_;
    NaiveRegistry model_;
    std::vector<bool> builtInAnswers_ = std::vector<bool>(largestID + 1, false);
};

TEST(DisplayRegistryModel, AgreesWithANaiveRegistryUnderRandomHistories) {
    for (unsigned seed = 1; seed <= 300 && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        History history(seed);
        for (int i = 0; i < 100; ++i) {
            history.step();
        }
    }
}

}  // namespace
}  // namespace tavrel
