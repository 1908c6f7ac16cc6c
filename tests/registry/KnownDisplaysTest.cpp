#include "registry/DisplayRegistry.h"

#include <gmock/gmock.h>

#include <string_view>

#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class KnownDisplaysTest : public testing::Test {
protected:
    void store(std::string_view text) { userDefaults.setData(DisplayRegistry::storageKey, text); }

    SimulatedUserDefaults userDefaults;
    KnownDisplays known{userDefaults};
};

TEST_F(KnownDisplaysTest, AreNoneWithoutAStoredValue) {
    EXPECT_THAT(known.read(), IsEmpty());
}

TEST_F(KnownDisplaysTest, AreThoseThatAreStoredNow) {
    store(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5}])");
    EXPECT_THAT(known.read(), ElementsAre(StoredDisplay{1, true, WallTime{5}}));

    store(R"([{"id":2,"isBuiltIn":false,"lastSeenAt":6}])");

    EXPECT_THAT(known.read(), ElementsAre(StoredDisplay{2, false, WallTime{6}}));
}

TEST_F(KnownDisplaysTest, AreNoneOnceTheStoredValueIsDamaged) {
    store(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5}])");
    known.read();

    store(R"([{"id":1,)");

    EXPECT_THAT(known.read(), IsEmpty());
}

TEST_F(KnownDisplaysTest, AreDecodedOnceWhileTheStoredValueStaysTheSame) {
    store(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5}])");
    const StoredDisplay* const first = known.read().data();

    store(R"([{"id":1,"isBuiltIn":true,"lastSeenAt":5}])");

    EXPECT_EQ(known.read().data(), first);
}

}  // namespace
}  // namespace tavrel
