// How an enumeration lists connected and remembered displays.
#include "display/DisplayIntegration.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <numeric>

#include "tests/display/DisplayIntegrationTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(DisplayIntegrationTest, ThePanelComesBeforeAnExternalAndNeitherIsNumbered) {
    connectBuiltIn(9);
    connect({4});

    const auto displays = fetch();

    ASSERT_EQ(displays.size(), 2U);
    EXPECT_EQ(displays[0].name(), "MacBook Display");
    EXPECT_EQ(displays[0].kind(), DisplayDevice::Kind::builtIn);
    EXPECT_EQ(displays[0].displayID(), 9U);
    EXPECT_EQ(displays[0].id(), "9");
    EXPECT_EQ(displays[1].name(), "External Display");
    EXPECT_EQ(displays[1].kind(), DisplayDevice::Kind::external);
    EXPECT_EQ(displays[1].displayID(), 4U);
    EXPECT_EQ(displays[1].id(), "4");
    for (const DisplayDevice& display : displays) {
        EXPECT_TRUE(display.isOn);
        EXPECT_FALSE(display.isBusy);
    }
}

TEST_F(DisplayIntegrationTest, TwoExternalsBesideThePanelAreNumberedByIdentifier) {
    connect({8, 3});
    connectBuiltIn(9);

    EXPECT_THAT(fetchLines(), ElementsAre("9: MacBook Display on", "3: External Display 1 on",
                                          "8: External Display 2 on"));
}

TEST_F(DisplayIntegrationTest, RememberedExternalBesideTwoOnlineDisplaysGetsNoNumber) {
    connectBuiltIn(9);
    connect({8});
    remember({3});

    EXPECT_THAT(fetchLines(), ElementsAre("9: MacBook Display on", "3: External Display off",
                                          "8: External Display on"));
}

TEST_F(DisplayIntegrationTest, TwoExternalsWithoutAPanelAreInTheOrderOfTheirIdentifiers) {
    connect({8, 3});

    EXPECT_THAT(fetchLines(), ElementsAre("3: External Display on", "8: External Display on"));
}

TEST_F(DisplayIntegrationTest, ThreeExternalsWithoutAPanelAreNumbered) {
    connect({8, 3, 5});

    EXPECT_THAT(fetchLines(), ElementsAre("3: External Display 1 on", "5: External Display 2 on",
                                          "8: External Display 3 on"));
}

TEST_F(DisplayIntegrationTest, NumberingCountsRememberedExternalsToo) {
    connectBuiltIn(9);
    connect({8, 2});
    remember({5, 12});

    EXPECT_THAT(fetchLines(), ElementsAre("9: MacBook Display on", "2: External Display 1 on",
                                          "5: External Display 2 off", "8: External Display 3 on",
                                          "12: External Display 4 off"));
}

TEST_F(DisplayIntegrationTest, ManyRememberedExternalsAloneAreNotNumbered) {
    connect({8});
    remember({1, 2, 3, 4});

    EXPECT_THAT(fetchLines(), ElementsAre("1: External Display off", "2: External Display off",
                                          "3: External Display off", "4: External Display off",
                                          "8: External Display on"));
}

TEST_F(DisplayIntegrationTest, NumbersDependOnTheLengthOfTheOnlineListEvenWithRepetitions) {
    server.facts[8] = {.online = true, .active = true};
    server.allDisplays = {{8, 8, 8}};

    EXPECT_THAT(fetchLines(), ElementsAre("8: External Display 1 on"));
}

TEST_F(DisplayIntegrationTest, PhantomsDoNotCountTowardsTheNumbering) {
    connect({8, 3});
    server.allDisplays = {{8, 77, 0, 3}};

    EXPECT_THAT(fetchLines(), ElementsAre("3: External Display on", "8: External Display on"));
}

TEST_F(DisplayIntegrationTest, NamesAreOrderedAsTextSoTenComesBeforeTwo) {
    connect({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11});

    EXPECT_THAT(fetchIDs(), ElementsAre(1, 10, 11, 2, 3, 4, 5, 6, 7, 8, 9));
    EXPECT_EQ(fetchLines().at(1), "10: External Display 10 on");
}

TEST_F(DisplayIntegrationTest, HoweverManyShareANameTheyComeByIdentifier) {
    std::vector<DisplayID> ids(40);
    std::iota(ids.begin(), ids.end(), 1);
    remember(ids);

    EXPECT_EQ(fetchIDs(), ids);
    EXPECT_EQ(fetchLines().front(), "1: External Display off");
    EXPECT_EQ(fetchLines().back(), "40: External Display off");
}

TEST_F(DisplayIntegrationTest, SeveralPanelsShareTheirNameAndComeByIdentifier) {
    connect({1, 2});
    connectBuiltIn(9);
    connectBuiltIn(4);

    EXPECT_THAT(fetchLines(), ElementsAre("4: MacBook Display on", "9: MacBook Display on",
                                          "1: External Display 1 on", "2: External Display 2 on"));
}

TEST_F(DisplayIntegrationTest, SwitchedOffDisplayInTheListIsOff) {
    connectBuiltIn(9);
    connect({4});
    server.facts[4].active = false;

    EXPECT_THAT(fetchLines(), ElementsAre("9: MacBook Display on", "4: External Display off"));
}

TEST_F(DisplayIntegrationTest, SaysWhichMonitorEachIs) {
    server.allDisplays = {3, 4};
    server.facts[3] = {.online = true, .hardware = {"ACM 27U", "DP-2"}};
    server.facts[4] = {.online = true, .hardware = {"", "HDMI-1"}};

    const std::vector<DisplayDevice> displays = fetch();

    ASSERT_EQ(displays.size(), 2U);
    EXPECT_EQ(displays[0].hardware, (DisplayHardware{"ACM 27U", "DP-2"}));
    EXPECT_EQ(displays[1].hardware, (DisplayHardware{"", "HDMI-1"}));
}

TEST_F(DisplayIntegrationTest, RememberedPanelKeepsItsKindWithoutBeingAsked) {
    connect({4});
    remember({9}, /*builtIn=*/true);

    EXPECT_THAT(fetchLines(), ElementsAre("9: MacBook Display off", "4: External Display on"));
    EXPECT_THAT(server.takeCalls(), testing::Not(testing::Contains("builtIn 9")));
}

TEST_F(DisplayIntegrationTest, RememberedDisplayIsOnWhenTheServerSaysSo) {
    remember({5});
    server.facts[5].active = true;

    EXPECT_THAT(fetchLines(), ElementsAre("5: External Display on"));
}

TEST_F(DisplayIntegrationTest, SwitchedOffDisplayIsOnlyRememberedWithoutAPrivateList) {
    server.onlineDisplays = {{4}};
    EXPECT_THAT(fetchLines(), ElementsAre("4: External Display off"));

    remember({6});
    EXPECT_THAT(fetchLines(), ElementsAre("4: External Display off", "6: External Display off"));
}

TEST_F(DisplayIntegrationTest, NothingOnlineGivesTheRememberedOnes) {
    EXPECT_THAT(fetchLines(), IsEmpty());

    remember({2, 1});
    EXPECT_THAT(fetchLines(), ElementsAre("1: External Display off", "2: External Display off"));
}

TEST_F(DisplayIntegrationTest, DisplayNotSeenFor31DaysIsGone) {
    remember({2});
    clock.time = clock.time + 31 * 86'400.0;
    connect({1});

    EXPECT_THAT(fetchLines(), ElementsAre("1: External Display on"));
}

TEST_F(DisplayIntegrationTest, EverySuccessRewritesTheRegistry) {
    connect({1});

    fetch();
    clock.time = clock.time + 60;
    fetch();

    EXPECT_EQ(store.writes(), 2U);
    EXPECT_THAT(DisplayRegistry::knownDisplays(store),
                ElementsAre(StoredDisplay{1, false, clock.time}));
}

TEST_F(DisplayIntegrationTest, RegistryThatCannotBeReadOrWrittenDoesNotMatter) {
    connect({1});
    store.setData(DisplayRegistry::storageKey, "damaged");
    store.setWritable(false);

    EXPECT_THAT(fetchLines(), ElementsAre("1: External Display on"));
}

TEST_F(DisplayIntegrationTest, AsksOneMomentHoweverManyDisplaysThereAre) {
    connectBuiltIn(9);
    connect({1, 2, 3});
    remember({4});

    fetch();

    EXPECT_EQ(server.moments, 1);
    EXPECT_EQ(server.probes, 1) << "a monitor may have just been plugged in";
}

}  // namespace
}  // namespace tavrel
