// What is special about the application on a Mac: services that refuse, and a life without a
// window.
#include <gtest/gtest.h>

#include "platform/ReconfigurationReports.h"
#include "registry/DisplayRegistry.h"
#include "tests/platform/macos/MacStage.h"
#include "tests/platform/macos/simulated/Preferences.h"
#include "tests/scenario/Scenario.h"
#include "tests/scenario/Steps.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {
namespace {

using scenario::first;
using scenario::MacStage;
using scenario::otherProgramSwitchesOff;
using scenario::second;
using scenario::serverIsAsAtFirst;
using scenario::third;
using scenario::userFlips;
using scenario::windowSays;
using scenario::windowShowsOff;
using scenario::windowShowsOn;
using simulatedMac::Refusals;
using simulatedMac::State;

class MacApplicationTest : public testing::Test {
protected:
    void expectStory(std::vector<scenario::Step> steps) {
        EXPECT_EQ(play({"Test", stage.serverAtFirst().size(), std::move(steps)}, stage),
                  std::nullopt);
    }

    void refuse(simulatedMac::Refusal which, std::int32_t status) {
        stage.mac().with([&](State& state) { state.refusals.*which = status; });
    }

    /// This change, and the ones after it until there are so many, hang until they are let go.
    void hangWhileSwitchingOffFirst(int changes) {
        stage.mac().with([&](State& state) { state.changesToHang = changes; });
        expectStory({userFlips(first), windowSays("Turning off External Display 1…")});
        ASSERT_TRUE(support::waitUntil([&] {
            return stage.mac().with([](State& state) { return state.hangingChanges > 0; });
        }));
    }
    void letGo() {
        stage.mac().with([](State& state) { state.changesToHang = state.hangingChanges = 0; });
    }

    MacStage stage{3};
};

TEST_F(MacApplicationTest, MakesEachChangeInItsHelperProcess) {
    expectStory({userFlips(first), scenario::serverHasOff({first})});

    const simulatedMac::Report last =
        stage.mac().with([](State& state) { return state.reports.at(state.reportCount - 1); });
    EXPECT_EQ(last.flags, displayChange::disabled);
    EXPECT_NE(last.madeBy, 0) << "by another program";
    EXPECT_NE(last.madeBy, stage.application().pid()) << "by the application itself";
}

TEST_F(MacApplicationTest, RemembersDisplaysInThePreferences) {
    expectStory({windowSays("Found 3 displays")});

    const std::string stored =
        simulatedMac::preferenceData(stage.mac(), DisplayRegistry::storageKey);
    for (const char* each : {"\"id\":2", "\"id\":3", "\"id\":4"}) {
        EXPECT_NE(stored.find(each), std::string::npos) << stored;
    }
}

TEST_F(MacApplicationTest, RecoversWhereASwitchIsReportedAsARemoval) {
    stage.mac().with([](State& state) { state.switchesComeAndGo = true; });

    expectStory({windowSays("Found 3 displays"), otherProgramSwitchesOff({first, second, third}),
                 serverIsAsAtFirst(), windowShowsOn(first)});
}

TEST_F(MacApplicationTest, ShowsTheStatusOfASwitchThatTheServerRefuses) {
    refuse(&Refusals::complete, 1004);

    expectStory({userFlips(first),
                 windowSays("macOS couldn’t change the desktop display layout (error 1004)"),
                 windowShowsOn(first), serverIsAsAtFirst()});
}

TEST_F(MacApplicationTest, RunsWithoutAHotKeyWhenTheChordIsRefused) {
    stage.quitApplication();
    refuse(&Refusals::registerHotKey, -9878);
    stage.startApplication();

    expectStory({userFlips(first), windowShowsOff(first), scenario::userPressesWake(),
                 serverIsAsAtFirst()});
}

TEST_F(MacApplicationTest, WakesByItsButtonWhereAnotherProgramHoldsTheChordExclusively) {
    stage.mac().with([](State& state) { state.chordsAreHeldElsewhere = true; });
    expectStory({userFlips(first), windowShowsOff(first), windowSays("External Display 1 is off")});

    stage.pressHotKey();

    expectStory({windowSays("External Display 1 is off"), windowShowsOff(first),
                 scenario::userPressesWake(), serverIsAsAtFirst()});
}

TEST_F(MacApplicationTest, WakesOnceWhenItsOwnWindowIsInFront) {
    expectStory({userFlips(first), windowShowsOff(first)});

    stage.pressHotKey();

    // What is flipped afterwards goes off after all that the chord has led to.
    expectStory({windowSays("Both displays are on"), serverIsAsAtFirst(), userFlips(second),
                 windowShowsOff(second)});
    EXPECT_EQ(stage.mac().with([](State& state) { return state.switchOnRequests; }), 3)
        << "one for each display";
}

TEST_F(MacApplicationTest, WakesOnceByItsMenuWhereTheChordIsRefused) {
    stage.quitApplication();
    refuse(&Refusals::registerHotKey, -9878);
    stage.startApplication();
    expectStory({userFlips(first), windowShowsOff(first)});

    EXPECT_THROW(stage.pressHotKey(), std::runtime_error) << "nobody has registered it";

    expectStory({windowSays("Both displays are on"), serverIsAsAtFirst(), userFlips(second),
                 windowShowsOff(second)});
    EXPECT_EQ(stage.mac().with([](State& state) { return state.switchOnRequests; }), 3);
}

TEST_F(MacApplicationTest, RecoversByItsTimerWithoutReports) {
    stage.quitApplication();
    refuse(&Refusals::registerCallback, 1000);
    stage.startApplication();

    expectStory({windowSays("Found 3 displays"), otherProgramSwitchesOff({first, second, third}),
                 serverIsAsAtFirst()});
}

TEST_F(MacApplicationTest, LooksAfterTheDisplaysWithoutItsWindowAndShowsItWhenTheDockIsClicked) {
    ASSERT_TRUE(stage.closeWindow());
    EXPECT_TRUE(stage.window().rows.empty());

    expectStory({otherProgramSwitchesOff({first, second, third}), serverIsAsAtFirst()});
    EXPECT_TRUE(stage.application().isRunning());

    stage.clickDock();
    expectStory({windowShowsOn(first), windowShowsOn(second)});
}

TEST_F(MacApplicationTest, QuitsInGoodOrderWithoutItsWindow) {
    expectStory({userFlips(first), windowShowsOff(first)});
    ASSERT_TRUE(stage.closeWindow());

    stage.quitApplication();

    EXPECT_EQ(stage.server(), stage.serverAtFirst());
}

TEST_F(MacApplicationTest, AtALogOutEverythingIsOnBeforeItAnswersWhetherItMayEnd) {
    expectStory({userFlips(first), windowShowsOff(first)});

    EXPECT_EQ(stage.logOut(), 3U);

    EXPECT_TRUE(support::waitUntil([&] { return !stage.application().isRunning(); }));
}

TEST_F(MacApplicationTest, QuittingWithASwitchOffInFlightLeavesThatDisplayOn) {
    hangWhileSwitchingOffFirst(1);

    // Nobody listens to reports any more when the change is made.
    stage.beginToQuit();
    letGo();
    stage.awaitQuit();

    EXPECT_EQ(stage.server(), stage.serverAtFirst());
}

TEST_F(MacApplicationTest, QuittingWhileEveryChangeHangsLeavesTheRestToTheHelper) {
    expectStory({userFlips(third), windowShowsOff(third)});
    hangWhileSwitchingOffFirst(100);

    stage.quitApplication();
    EXPECT_FALSE(stage.server().at(third).isOn);
    letGo();

    EXPECT_TRUE(support::waitUntil([&] { return stage.server() == stage.serverAtFirst(); }));
}

TEST_F(MacApplicationTest, WakesWhatIsOffBesideAChangeThatHangsAndUndoesThat) {
    expectStory({userFlips(third), windowShowsOff(third)});
    hangWhileSwitchingOffFirst(1);

    stage.pressWake();
    expectStory({serverIsAsAtFirst(), windowSays("Both displays are on")});
    letGo();

    expectStory({windowSays("macOS couldn’t change the desktop display layout (error 1004)"),
                 serverIsAsAtFirst(), windowShowsOn(first)});
}

TEST_F(MacApplicationTest, StartsAnewWhereThePreferenceIsOfAnotherKind) {
    stage.quitApplication();
    plantPreference(stage.mac(), DisplayRegistry::storageKey,
                    simulatedMac::Preference::Kind::string, "[]");
    stage.startApplication();

    expectStory({windowSays("Found 3 displays")});
}

}  // namespace
}  // namespace tavrel
