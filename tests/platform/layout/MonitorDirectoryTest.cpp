#include "platform/layout/MonitorDirectory.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/simulated/SimulatedUserDefaults.h"

namespace tavrel::layout {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

constexpr EdidNumbers someMonitor{.vendor = 1, .product = 2, .serial = 3};
constexpr EdidNumbers otherMonitor{.vendor = 1, .product = 2, .serial = 4};

/// Two processes of one user, or one and its next run.
class MonitorDirectoryTest : public testing::Test {
protected:
    /// Who `directory` says is at the first of these connectors.
    static DisplayID firstOf(const std::vector<Identity>& outputs, MonitorDirectory& directory) {
        return identify(outputs, directory.meet(outputs)).displays.front();
    }

    SimulatedUserDefaults store;
    MonitorDirectory here{store};
    MonitorDirectory there{store};
};

TEST_F(MonitorDirectoryTest, AnotherProcessKnowsWhoHasMoved) {
    const DisplayID first = firstOf({{"DP-1", someMonitor}, {"DP-2", {}}}, here);

    EXPECT_EQ(firstOf({{"DP-2", someMonitor}, {"DP-1", {}}}, there), first);
}

TEST_F(MonitorDirectoryTest, AnotherProcessKnowsWhoWasThereFirst) {
    const DisplayID first = firstOf({{"DP-1", someMonitor}, {"DP-2", {}}}, here);
    ASSERT_EQ(firstOf({{"DP-2", someMonitor}, {"DP-1", {}}}, here), first);
    const std::vector<Identity> twins{{"DP-2", someMonitor}, {"DP-1", someMonitor}};

    EXPECT_EQ(firstOf(twins, there), first);
    EXPECT_EQ(firstOf(twins, here), first);
    EXPECT_EQ(identify(twins, here.meet(twins)).displays,
              identify(twins, there.meet(twins)).displays);
}

TEST_F(MonitorDirectoryTest, OneThatMissedTheTwinAsksTheStoreBeforeItTakesItForAMove) {
    const DisplayID first = firstOf({{"DP-1", someMonitor}, {"DP-2", {}}}, here);
    const DisplayID twin = firstOf({{"DP-2", someMonitor}, {"DP-1", someMonitor}}, there);
    ASSERT_NE(twin, first);

    EXPECT_EQ(firstOf({{"DP-2", someMonitor}, {"DP-1", {}}}, here), twin);
}

TEST_F(MonitorDirectoryTest, KnowsAllThatAnotherHasMet) {
    const std::vector<Identity> outputs{{"DP-1", someMonitor}};
    here.meet(outputs);

    EXPECT_EQ(there.all(), here.all());
    EXPECT_THAT(there.all(), SizeIs(1));
}

TEST_F(MonitorDirectoryTest, TheStoreIsLeftAloneWhileThereIsNoNews) {
    const std::vector<Identity> outputs{{"DP-1", someMonitor}, {"DP-2", {}}};
    here.meet(outputs);
    const auto reads = store.reads();
    const auto writes = store.writes();

    here.meet(outputs);
    here.meet({{"DP-1", {}}, {"DP-2", {}}});

    EXPECT_EQ(store.reads(), reads);
    there.meet(outputs);
    EXPECT_EQ(store.writes(), writes) << "what another has written is not written again";
}

TEST_F(MonitorDirectoryTest, WithoutAStoreAProcessKnowsWhomItHasMet) {
    store.setWritable(false);
    const DisplayID first = firstOf({{"DP-1", someMonitor}, {"DP-2", {}}}, here);

    EXPECT_EQ(firstOf({{"DP-2", someMonitor}, {"DP-1", {}}}, here), first);
    EXPECT_THAT(here.all(), SizeIs(1));
    EXPECT_THAT(there.all(), IsEmpty());
}

TEST_F(MonitorDirectoryTest, WhatIsDamagedIsReplaced) {
    store.replaceFromOutside(knownMonitorsKey, "[{");

    here.meet({{"DP-1", someMonitor}});

    EXPECT_EQ(decodeMonitors(*store.data(knownMonitorsKey)), here.all());
}

TEST_F(MonitorDirectoryTest, OfVeryManyTheLatestAreKept) {
    KnownMonitors many;
    for (std::uint32_t serial = 1; serial <= 256; ++serial) {
        many.push_back({{"DP-1", {.vendor = 1, .product = 2, .serial = serial}}, serial});
    }
    store.replaceFromOutside(knownMonitorsKey, encodeMonitors(many));
    ASSERT_THAT(here.all(), SizeIs(256)) << "they are all kept";

    here.meet({{"DP-1", {.vendor = 1, .product = 2, .serial = 257}}});

    EXPECT_THAT(here.all(), SizeIs(256));
    EXPECT_EQ(here.all().front(), many[1]);
    EXPECT_EQ(here.all().back().identity.edid.serial, 257U);
}

TEST(KnownMonitorsTest, KeepTheirStoredForm) {
    EXPECT_EQ(encodeMonitors({{{"DP-1", someMonitor}, 7}}),
              R"([{"connector":"DP-1","display":7,"product":2,"serial":3,"vendor":1}])");
}

TEST(KnownMonitorsTest, ReadBackWhatWasWritten) {
    const KnownMonitors some{{{"DP-1", someMonitor}, 4000000000U}, {{"eDP-1", otherMonitor}, 1}};

    EXPECT_EQ(decodeMonitors(encodeMonitors(some)), some);
    EXPECT_EQ(decodeMonitors(encodeMonitors({})), KnownMonitors());
}

TEST(KnownMonitorsTest, AConnectorMayBeCalledAnything) {
    EXPECT_NE(decodeMonitors(encodeMonitors({{{"\xff", someMonitor}, 7}})), std::nullopt);
}

TEST(KnownMonitorsTest, RefuseWhatIsNotAListOfThem) {
    const std::string good =
        R"({"connector":"DP-1","display":7,"product":2,"serial":3,"vendor":1})";
    ASSERT_NE(decodeMonitors("[" + good + "]"), std::nullopt) << "or the rest shows nothing";

    EXPECT_EQ(decodeMonitors("[" + good + "," + good + "]"), std::nullopt) << "twice one number";
    for (const char* bytes :
         {"", "{}", "[1]", "[{}]",
          R"([{"connector":"DP-1","display":0,"product":2,"serial":3,)"
          R"("vendor":1}])",
          R"([{"connector":"DP-1","display":7,"product":0,"serial":0,"vendor":0}])",
          R"([{"connector":1,"display":7,"product":2,"serial":3,"vendor":1}])",
          R"([{"connector":"DP-1","display":-1,"product":2,"serial":3,"vendor":1}])"}) {
        EXPECT_EQ(decodeMonitors(bytes), std::nullopt) << bytes;
    }
    EXPECT_EQ(decodeMonitors(std::string(100'000, '[')), std::nullopt);
}

}  // namespace
}  // namespace tavrel::layout
