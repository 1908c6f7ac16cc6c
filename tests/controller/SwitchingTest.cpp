#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class SwitchingTest : public ControllerTest {
protected:
    void startWithTwo() { startWith({panel, firstExternal}); }

    /// Switches a display and lets the switch end.
    void complete(DisplayID display, bool isOn) {
        set(display, isOn);
        scheduler.settle();
        server.takeChanges();
    }

    void expectRefused() {
        EXPECT_EQ(status(), "One display must stay on");
        EXPECT_EQ(error(),
                  "Keep at least one display enabled so you can turn the other one back on.");
    }

    void expectUnchanged(const std::string& reason) {
        EXPECT_EQ(status(), "Couldn’t change External Display");
        EXPECT_EQ(error(), reason);
        EXPECT_FALSE(listed(firstExternal).isBusy);
        EXPECT_TRUE(listed(firstExternal).isOn);
    }
};

TEST_F(SwitchingTest, SwitchingOffMarksTheEntryBusyThenOff) {
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
    EXPECT_EQ(server.takeChanges(), switchedOff({firstExternal}));
    EXPECT_FALSE(server.find(firstExternal)->enabled);
}

TEST_F(SwitchingTest, SwitchingOnMarksTheEntryOn) {
    startWithTwo();
    complete(firstExternal, false);

    set(firstExternal, true);

    EXPECT_EQ(status(), "Waking External Display…");
    scheduler.settle();
    EXPECT_EQ(status(), "External Display is on");
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(SwitchingTest, TheLastDisplayThatIsOnIsNotSwitchedOff) {
    startWithTwo();
    complete(firstExternal, false);

    set(panel, false);

    expectRefused();
    scheduler.settle();
    EXPECT_TRUE(listed(panel).isOn);
    EXPECT_FALSE(listed(panel).isBusy);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, AnInactiveDisplayIsNoReasonToSwitchTheOtherOff) {
    startWithTwo();
    switchOffSilently({firstExternal});
    EXPECT_TRUE(listed(firstExternal).isOn);

    set(panel, false);

    expectRefused();
}

TEST_F(SwitchingTest, AnOfflineDisplayIsNoReasonToSwitchTheOtherOff) {
    startWithTwo();
    unplugSilently(firstExternal);

    set(panel, false);

    expectRefused();
}

TEST_F(SwitchingTest, ADisplayThatIsActiveYetOfflineIsNoReasonAndIsNotEvenAskedIfItIsActive) {
    startWithTwo();
    loggedQueries.sayOffline(firstExternal);

    set(panel, false);

    expectRefused();
    EXPECT_THAT(calls.calls(), ElementsAre("moment", "online 1"));
}

TEST_F(SwitchingTest, TheOthersAreAskedInListOrderUpToTheFirstThatIsLive) {
    startWith(allThree);
    switchOffSilently({panel});

    set(secondExternal, false);

    EXPECT_THAT(calls.calls(),
                ElementsAre("moment", "online 5", "active 5", "online 1", "active 1"));
}

TEST_F(SwitchingTest, TheOthersAreAskedAlsoWhenADisplayIsSwitchedOn) {
    startWithTwo();
    complete(firstExternal, false);
    calls.clear();

    set(firstExternal, true);

    EXPECT_THAT(calls.calls(), ElementsAre("moment", "online 5", "active 5"));
}

TEST_F(SwitchingTest, WhetherTheDisplayItselfIsLiveDoesNotMatter) {
    startWithTwo();
    switchOffSilently({panel});

    set(panel, false);

    EXPECT_EQ(status(), "Turning off MacBook Display…");
}

TEST_F(SwitchingTest, ARefusalSetsTheErrorTextBeforeTheStatus) {
    startWithTwo();
    switchOffSilently({firstExternal});

    EXPECT_THAT(statusesBesideAnError([&] { set(panel, false); }),
                ElementsAre("Both displays are ready"));
}

TEST_F(SwitchingTest, SwitchingOnNeedsNoOtherUsableDisplay) {
    startWithTwo();
    complete(firstExternal, false);
    switchOffSilently({panel});

    set(firstExternal, true);
    scheduler.runBackgroundJobs();
    scheduler.runMainTasks();

    EXPECT_EQ(status(), "External Display is on");
}

TEST_F(SwitchingTest, ARequestForThePresentStateChangesNothing) {
    startWithTwo();

    EXPECT_EQ(signalsDuring([&] { set(panel, true); }), 0);
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, ARequestForABusyDisplayChangesNothing) {
    startWithTwo();
    set(firstExternal, false);

    EXPECT_EQ(signalsDuring([&] { set(firstExternal, false); }), 0);
}

TEST_F(SwitchingTest, TheValuePassedInCountsNotTheEntry) {
    startWithTwo();
    const DisplayDevice asTheRowHoldsIt = listed(firstExternal);
    set(firstExternal, false);

    controller->set(asTheRowHoldsIt, false);
    scheduler.settle();

    EXPECT_EQ(server.takeChanges(), switchedOff({firstExternal, firstExternal}));
}

TEST_F(SwitchingTest, APlatformWithoutControlIsAnError) {
    startWithTwo();
    server.setCanControl(false);

    set(firstExternal, false);
    scheduler.settle();

    expectUnchanged("This macOS version doesn’t expose display enable/disable control");
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(SwitchingTest, ARefusalByTheServerIsAnErrorWithItsCode) {
    startWithTwo();
    displaySwitch.refuse(firstExternal, 1001);

    set(firstExternal, false);
    scheduler.settle();

    expectUnchanged("macOS couldn’t change the desktop display layout (error 1001)");
}

TEST_F(SwitchingTest, TheStartClearsTheErrorTextBeforeItSetsTheStatus) {
    startWithTwo();
    controller->setErrorMessage("old");

    const auto seen = atEachSignal([&] { return texts(); }, [&] { set(firstExternal, false); });

    EXPECT_THAT(seen.back(), Pair(std::nullopt, "Both displays are ready"));
    EXPECT_EQ(status(), "Turning off External Display…");
}

TEST_F(SwitchingTest, AFailureSetsTheErrorTextBeforeTheStatus) {
    startWithTwo();
    displaySwitch.refuse(firstExternal, 1001);
    set(firstExternal, false);

    const auto seen = atEachSignal([&] { return texts(); }, [&] { scheduler.settle(); });

    EXPECT_THAT(seen.back(), Pair(error(), "Turning off External Display…"));
    EXPECT_EQ(status(), "Couldn’t change External Display");
}

TEST_F(SwitchingTest, ASuccessEditsTheDisplayBeforeItSetsTheStatus) {
    startWithTwo();
    set(firstExternal, false);

    const auto seen = atEachSignal([&] { return std::pair(listed(firstExternal).isOn, status()); },
                                   [&] { scheduler.settle(); });

    const std::string before = "Turning off External Display…";
    EXPECT_THAT(seen, ElementsAre(Pair(true, before), Pair(false, before)));
}

TEST_F(SwitchingTest, TheServerIsAskedForControlAndThenToldButNotOnTheMainThread) {
    startWithTwo();
    set(firstExternal, false);
    calls.clear();

    scheduler.settle();

    EXPECT_THAT(calls.calls(), ElementsAre("can switch", "1 off"));
    EXPECT_THAT(calls.onMainThread(), IsEmpty());
}

TEST_F(SwitchingTest, ASuccessKeepsAnErrorTextThatCameMeanwhile) {
    startWithTwo();

    set(firstExternal, false);
    controller->setErrorMessage("meanwhile");
    scheduler.settle();

    EXPECT_EQ(status(), "External Display is off");
    EXPECT_EQ(error(), "meanwhile");
}

TEST_F(SwitchingTest, ADisplayThatLeftTheListMeanwhileOnlyChangesTheTexts) {
    startWithTwo();

    set(firstExternal, false);
    controller->setDisplays({});
    scheduler.settle();

    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(SwitchingTest, ADisplayThatLeftTheListBeforeItsSwitchFailedOnlyChangesTheTexts) {
    startWithTwo();
    displaySwitch.refuse(firstExternal, 1001);

    set(firstExternal, false);
    controller->setDisplays({listed(panel)});
    scheduler.settle();

    EXPECT_THAT(controller->displays(), SizeIs(1));
    EXPECT_TRUE(listed(panel).isOn);
    EXPECT_EQ(status(), "Couldn’t change External Display");
    EXPECT_EQ(error(), "macOS couldn’t change the desktop display layout (error 1001)");
}

TEST_F(SwitchingTest, ADisplayThatIsNotListedIsSwitchedToo) {
    startWithTwo();
    const DisplayDevice external = listed(firstExternal);
    controller->setDisplays({listed(panel)});

    controller->set(external, false);
    scheduler.settle();

    EXPECT_EQ(server.takeChanges(), switchedOff({firstExternal}));
    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(SwitchingTest, EachAcceptedRequestMovesTheSuppressionAlsoOneThatFails) {
    startWithTwo();
    displaySwitch.refuse(firstExternal, 1001);

    for (int round = 0; round < 2; ++round) {
        set(firstExternal, false);
        EXPECT_EQ(controller->suppressTopologyRestoreUntil(), system.wallClock.now() + 2.0);
        scheduler.advance(500ms);
    }
}

TEST_F(SwitchingTest, ARefusedRequestDoesNotMoveTheSuppression) {
    startWithTwo();
    switchOffSilently({firstExternal});

    set(panel, false);

    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
}

TEST_F(SwitchingTest, NoRefreshFollows) {
    startWithTwo();
    const std::size_t writes = system.userDefaults.writes();

    set(firstExternal, false);
    scheduler.advance(5s);

    EXPECT_EQ(system.userDefaults.writes(), writes);
}

TEST_F(SwitchingTest, TwoDisplaysMayBeSwitchedAtOnce) {
    startWith(allThree);
    displaySwitch.setLatency(100ms);

    set(firstExternal, false);
    set(secondExternal, false);

    EXPECT_TRUE(listed(firstExternal).isBusy);
    EXPECT_TRUE(listed(secondExternal).isBusy);
    scheduler.advance(100ms);
    EXPECT_FALSE(listed(firstExternal).isOn);
    EXPECT_FALSE(listed(secondExternal).isOn);
}

TEST_F(SwitchingTest, TheOutcomeForADestroyedControllerIsDropped) {
    startWithTwo();
    // A change would be reported, and the report keep the controller.
    displaySwitch.refuse(firstExternal, 1001);
    set(firstExternal, false);
    calls.clear();

    expectKeptByItsJobsAlone();

    EXPECT_THAT(calls.calls(), ElementsAre("can switch", "1 off"));
}

}  // namespace
}  // namespace tavrel
