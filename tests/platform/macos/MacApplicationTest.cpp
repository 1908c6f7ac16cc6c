// What is special about the application on a Mac: parts of its surroundings that fail, and
// a life without a window.
#include <gtest/gtest.h>

#include <csignal>

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
using scenario::second;
using scenario::third;
using simulatedMac::State;

std::optional<std::string> happens(MacStage& stage, std::vector<scenario::Step> steps) {
    return play({"Test", stage.serverAtFirst().size(), std::move(steps)}, stage);
}

TEST(MacApplication, hasItsGuardMakeEachChange) {
    MacStage stage(2);
    EXPECT_EQ(happens(stage, {scenario::userFlips(first), scenario::serverHasOff({first})}),
              std::nullopt);
    const simulatedMac::Report last =
        stage.mac().with([](State& state) { return state.reports.at(state.reportCount - 1); });
    EXPECT_EQ(last.flags, displayChange::disabled);
    EXPECT_NE(last.madeBy, 0) << "by another program";
    EXPECT_NE(last.madeBy, stage.application().pid()) << "by the application itself";
}

TEST(MacApplication, remembersDisplaysInThePreferences) {
    MacStage stage(2);
    EXPECT_EQ(happens(stage, {scenario::windowSays("Both displays are ready")}), std::nullopt);
    const std::string stored =
        simulatedMac::preferenceData(stage.mac(), DisplayRegistry::storageKey);
    EXPECT_NE(stored.find("\"id\":2"), std::string::npos) << stored;
    EXPECT_NE(stored.find("\"id\":3"), std::string::npos) << stored;
}

TEST(MacApplication, recoversAlsoWhereASwitchIsReportedAsARemoval) {
    MacStage stage(3);
    stage.mac().with([](State& state) { state.switchesComeAndGo = true; });
    EXPECT_EQ(happens(stage, {scenario::windowSays("Found 3 displays"),
                              scenario::otherProgramSwitchesOff({first, second, third}),
                              scenario::serverIsAsAtFirst(), scenario::windowShowsOn(first)}),
              std::nullopt);
}

TEST(MacApplication, showsTheStatusOfASwitchThatTheServerRefuses) {
    MacStage stage(2);
    stage.mac().with([](State& state) { state.refusals.complete = 1004; });
    EXPECT_EQ(
        happens(stage, {scenario::userFlips(first),
                        scenario::windowSays(
                            "macOS couldn’t change the desktop display layout (error 1004)")}),
        std::nullopt);
    EXPECT_EQ(happens(stage, {scenario::windowShowsOn(first), scenario::serverIsAsAtFirst()}),
              std::nullopt);
}

TEST(MacApplication, runsWithoutAHotKeyWhenTheChordIsTaken) {
    MacStage stage(2);
    stage.quitApplication();
    stage.mac().with([](State& state) { state.refusals.registerHotKey = -9878; });
    stage.startApplication();
    EXPECT_THROW(stage.pressHotKey(), std::runtime_error);
    EXPECT_EQ(happens(stage, {scenario::userFlips(first), scenario::windowShowsOff(first),
                              scenario::userPressesWake(), scenario::serverIsAsAtFirst()}),
              std::nullopt);
}

TEST(MacApplication, recoversByItsTimerWithoutReports) {
    MacStage stage(2);
    stage.quitApplication();
    stage.mac().with([](State& state) { state.refusals.registerCallback = 1000; });
    stage.startApplication();
    EXPECT_EQ(happens(stage, {scenario::windowSays("Both displays are ready"),
                              scenario::otherProgramSwitchesOff({first, second}),
                              scenario::serverIsAsAtFirst()}),
              std::nullopt);
}

TEST(MacApplication, goesOnWithoutItsWindowAndShowsItAgainWhenItsIconIsClicked) {
    MacStage stage(2);
    ASSERT_TRUE(stage.closeWindow());
    EXPECT_TRUE(stage.window().rows.empty());
    EXPECT_EQ(happens(stage, {scenario::otherProgramSwitchesOff({first, second}),
                              scenario::serverIsAsAtFirst()}),
              std::nullopt)
        << "it looks after the displays";
    EXPECT_TRUE(stage.application().isRunning());
    stage.clickDock();
    EXPECT_EQ(happens(stage, {scenario::windowShowsOn(first), scenario::windowShowsOn(second)}),
              std::nullopt);
}

TEST(MacApplication, quitsInGoodOrderWithoutItsWindow) {
    MacStage stage(2);
    EXPECT_EQ(happens(stage, {scenario::userFlips(first), scenario::windowShowsOff(first)}),
              std::nullopt);
    ASSERT_TRUE(stage.closeWindow());
    stage.quitApplication();
    EXPECT_TRUE(isOn(stage.mac(), 2));
}

TEST(MacApplication, startsAnewWhereThePreferenceIsOfAnotherKind) {
    MacStage stage(2);
    stage.quitApplication();
    simulatedMac::plantPreference(stage.mac(), DisplayRegistry::storageKey,
                                  simulatedMac::Preference::Kind::string, "[]");
    stage.startApplication();
    EXPECT_EQ(happens(stage, {scenario::windowSays("Both displays are ready")}), std::nullopt);
}

}  // namespace
}  // namespace tavrel
