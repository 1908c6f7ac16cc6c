#include <gmock/gmock.h>

#include <csignal>
#include <string>

#include "platform/simulated/SimulatedUserDefaults.h"
#include "platform/simulated/SimulatedWindowServer.h"
#include "registry/DisplayRegistry.h"
#include "tests/support/CoverageDump.h"
#include "tests/support/SettableClock.h"

namespace tavrel {
namespace {

std::string listOf(const std::vector<std::string>& ids) {
    std::string text;
    for (const std::string& id : ids) {
        text += (text.empty() ? "[" : ",") + (R"({"id":)" + id) +
                R"(,"isBuiltIn":false,"lastSeenAt":800000000})";
    }
    return text + "]";
}

class DisplayRegistryDeathTest : public testing::Test {
protected:
    DisplayRegistryDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    void mergeOver(const std::string& text) {
        keepCoverageOnAbort();
        store_.setData(DisplayRegistry::storageKey, text);
        DisplayRegistry::merge({1}, store_, *server_.now(), clock_);
    }

    SimulatedUserDefaults store_;
    SimulatedWindowServer server_;
    SettableClock clock_;
};

TEST_F(DisplayRegistryDeathTest, RepeatedStoredIdentifierStopsTheProcess) {
    EXPECT_EXIT(mergeOver(listOf({"2", "7", "7"})), testing::KilledBySignal(SIGABRT),
                testing::Eq("Duplicate values for key: '7'\n"));
    EXPECT_EXIT(mergeOver(listOf({"4294967295", "1", "4294967295"})),
                testing::KilledBySignal(SIGABRT),
                testing::Eq("Duplicate values for key: '4294967295'\n"));
}

TEST_F(DisplayRegistryDeathTest, RepeatedIdentifierIsNoConcernOfMereReading) {
    store_.setData(DisplayRegistry::storageKey, listOf({"7", "7"}));

    EXPECT_EQ(DisplayRegistry::knownDisplays(store_).size(), 2U);
}

}  // namespace
}  // namespace tavrel
