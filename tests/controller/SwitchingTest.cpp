#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class SwitchingTest : public ControllerTest {
protected:
    void startWithTwo() {
        connectPanel();
        server.connect({.id = firstExternal});
        startAndSettle();
    }

    void expectRefused() {
        EXPECT_EQ(status(), "One display must stay on");
        EXPECT_EQ(error(),
                  "Keep at least one display enabled so you can turn the other one back on.");
    }
};

TEST_F(SwitchingTest, switchingOffMarksTheEntryBusyThenOff) {
    startWithTwo();
    set(firstExternal, false);
    EXPECT_TRUE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(firstExternal).isOn);
    EXPECT_EQ(status(), "Turning off External Display…");
    scheduler.settle();
    EXPECT_FALSE(listed(firstExternal).isBusy);
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_EQ(status(), "External Display is off");
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(firstExternal, false)));
    EXPECT_FALSE(server.find(firstExternal)->enabled);
}

TEST_F(SwitchingTest, switchingOnSaysSo) {
    startWithTwo();
    set(firstExternal, false);
    scheduler.settle();
    set(firstExternal, true);
    EXPECT_EQ(status(), "Waking External Display…");
    scheduler.settle();
    EXPECT_EQ(status(), "External Display is on");
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(SwitchingTest, turningOffTheRemainingOneIsRefused) {
    startWithTwo();
    set(firstExternal, false);
    scheduler.settle();
    server.takeChanges();
    set(panel, false);
    expectRefused();
    scheduler.settle();
    EXPECT_TRUE(listed(panel).isOn);
    EXPECT_FALSE(listed(panel).isBusy);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, anotherDisplayThatIsOnlineButNotActiveDoesNotCount) {
    startWithTwo();
    switchOffSilently(firstExternal);
    EXPECT_TRUE(listed(firstExternal).isOn);
    set(panel, false);
    expectRefused();
}

TEST_F(SwitchingTest, anotherDisplayThatIsOfflineDoesNotCount) {
    startWithTwo();
    server.replaceSilently({.id = firstExternal, .connected = false});
    set(panel, false);
    expectRefused();
}

TEST_F(SwitchingTest, theDisplayBeingSwitchedIsNeverAskedAbout) {
    startWithTwo();
    switchOffSilently(panel);
    set(panel, false);
    EXPECT_EQ(status(), "Turning off MacBook Display…");
}

TEST_F(SwitchingTest, theErrorTextOfARefusalIsSetBeforeTheStatus) {
    startWithTwo();
    switchOffSilently(firstExternal);
    std::vector<std::string> statusWhenErrorStands;
    const auto subscription = controller->objectWillChange().subscribe([&] {
        if (error().has_value()) {
            statusWhenErrorStands.push_back(status());
        }
    });
    set(panel, false);
    EXPECT_THAT(statusWhenErrorStands, ElementsAre("Both displays are ready"));
}

TEST_F(SwitchingTest, turningOnIsCarriedOutEvenWithNoOtherUsableDisplay) {
    startWithTwo();
    set(firstExternal, false);
    scheduler.settle();
    switchOffSilently(panel);
    set(firstExternal, true);
    scheduler.runBackgroundJobs();
    scheduler.runMainTasks();
    EXPECT_EQ(status(), "External Display is on");
}

TEST_F(SwitchingTest, aRequestForTheStateItHasAlreadyChangesNothing) {
    startWithTwo();
    int changes = 0;
    const auto subscription = controller->objectWillChange().subscribe([&] { ++changes; });
    set(panel, true);
    EXPECT_EQ(changes, 0);
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, aRequestForABusyDisplayChangesNothing) {
    startWithTwo();
    set(firstExternal, false);
    int changes = 0;
    const auto subscription = controller->objectWillChange().subscribe([&] { ++changes; });
    set(firstExternal, false);
    EXPECT_EQ(changes, 0);
}

TEST_F(SwitchingTest, itIsTheValuePassedInThatCountsNotTheEntry) {
    startWithTwo();
    const DisplayDevice asTheRowHoldsIt = listed(firstExternal);
    set(firstExternal, false);
    controller->set(asTheRowHoldsIt, false);
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(firstExternal, false), Pair(firstExternal, false)));
}

TEST_F(SwitchingTest, aPlatformWithoutControlIsReported) {
    startWithTwo();
    server.setCanControl(false);
    set(firstExternal, false);
    scheduler.settle();
    EXPECT_EQ(status(), "Couldn’t change External Display");
    EXPECT_EQ(error(), "This macOS version doesn’t expose display enable/disable control");
    EXPECT_FALSE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(firstExternal).isOn);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, aRefusalOfThePlatformIsReportedWithItsCode) {
    startWithTwo();
    lifecycle.refuse(firstExternal, 1001);
    set(firstExternal, false);
    scheduler.settle();
    EXPECT_EQ(status(), "Couldn’t change External Display");
    EXPECT_EQ(error(), "macOS couldn’t change the desktop display layout (error 1001)");
    EXPECT_FALSE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(SwitchingTest, aSuccessDoesNotTouchAnErrorThatCameMeanwhile) {
    startWithTwo();
    set(firstExternal, false);
    controller->setErrorMessage("meanwhile");
    scheduler.settle();
    EXPECT_EQ(status(), "External Display is off");
    EXPECT_EQ(error(), "meanwhile");
}

TEST_F(SwitchingTest, aDisplayThatHasVanishedFromTheListOnlyChangesTheTexts) {
    startWithTwo();
    set(firstExternal, false);
    controller->setDisplays({});
    scheduler.settle();
    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(SwitchingTest, aDisplayThatIsNotListedIsSwitchedAllTheSame) {
    startWithTwo();
    const DisplayDevice external = listed(firstExternal);
    controller->setDisplays({listed(panel)});
    controller->set(external, false);
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(firstExternal, false)));
    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(SwitchingTest, theSuppressionMovesForwardOnEveryAcceptedCallAlsoOnOneThatFails) {
    startWithTwo();
    lifecycle.refuse(firstExternal, 1001);
    for (int round = 0; round < 2; ++round) {
        set(firstExternal, false);
        EXPECT_EQ(controller->suppressTopologyRestoreUntil(), system.wallClock.now() + 2.0);
        scheduler.advance(500ms);
    }
}

TEST_F(SwitchingTest, theSuppressionStaysOnARefusedCall) {
    startWithTwo();
    switchOffSilently(firstExternal);
    set(panel, false);
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
}

TEST_F(SwitchingTest, noRefreshFollowsASwitch) {
    startWithTwo();
    const std::size_t writes = system.userDefaults.writes();
    set(firstExternal, false);
    scheduler.advance(5s);
    EXPECT_EQ(system.userDefaults.writes(), writes);
}

TEST_F(SwitchingTest, twoSwitchesOfDifferentDisplaysMayRunAtOnce) {
    connectPanel();
    connectExternals();
    startAndSettle();
    lifecycle.setLatency(100ms);
    set(firstExternal, false);
    set(secondExternal, false);
    EXPECT_TRUE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(secondExternal).isBusy);
    scheduler.advance(100ms);
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(secondExternal).isOn);
}

TEST_F(SwitchingTest, theOutcomeForAControllerThatHasGoneIsDropped) {
    startWithTwo();
    set(firstExternal, false);
    controller.reset();
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(firstExternal, false)));
    EXPECT_EQ(server.callbacks(), 0U);
}

}  // namespace
}  // namespace tavrel
