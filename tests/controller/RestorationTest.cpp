#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class RestorationTest : public ControllerTest {
protected:
    void startWithAllOff() {
        startWith(allThree);
        switchOffSilently(allThree);
    }

    void refuse(const DisplayIDs& displays) {
        for (const DisplayID display : displays) {
            displaySwitch.refuse(display, serverStatus::cannotComplete);
        }
    }

    /// Restores while a recovery is scheduled, to its end, ninety milliseconds before that is due.
    void restoreWithARecoveryPending() {
        startWithAllOff();
        controller->scheduleTopologyRecovery();
        scheduler.advance(10ms);
        controller->restoreSafeLayout("message");
        scheduler.advance(500ms);
        EXPECT_EQ(status(), "message");
    }
};

TEST_F(RestorationTest, WithAnEmptyRegistryItOnlyRefreshes) {
    startWith({});

    controller->restoreSafeLayout("message");

    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), "Found 0 displays");
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
    scheduler.settle();
    EXPECT_EQ(status(), "Found 0 displays");
}

TEST_F(RestorationTest, ItsStartSetsTheTextsAndOpensTheSuppression) {
    startWithAllOff();
    controller->setErrorMessage("old");

    controller->restoreSafeLayout("message");

    EXPECT_TRUE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), system.wallClock.now() + 2.0);
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_EQ(status(), restoring);
}

TEST_F(RestorationTest, ItsStartClearsTheErrorTextBeforeItSetsTheStatus) {
    startWithAllOff();
    controller->setErrorMessage("old");

    const auto seen =
        atEachSignal([&] { return texts(); }, [&] { controller->restoreSafeLayout("message"); });

    EXPECT_THAT(
        seen, ElementsAre(Pair("old", "Found 3 displays"), Pair(std::nullopt, "Found 3 displays")));
}

TEST_F(RestorationTest, DisplaysAreEnabledBuiltInFirstThenByIdentifier) {
    startWithAllOff();

    controller->restoreSafeLayout("message");
    scheduler.settle();

    EXPECT_EQ(server.takeChanges(), switchedOn({panel, firstExternal, secondExternal}));
}

TEST_F(RestorationTest, AnActiveDisplayIsLeftAloneAndAnOfflineOneIsEnabled) {
    startWithAllOff();
    unplugSilently(secondExternal);
    server.replaceSilently({.id = panel, .builtIn = true});

    controller->restoreSafeLayout("message");
    scheduler.settle();

    EXPECT_EQ(server.takeChanges(), switchedOn({firstExternal, secondExternal}));
}

TEST_F(RestorationTest, ASecondOneWhileOneIsRunningIsIgnoredWithItsMessage) {
    startWithAllOff();
    recordStatuses();

    controller->restoreSafeLayout("first");
    controller->restoreSafeLayout("second");
    scheduler.advance(900ms);

    EXPECT_THAT(statuses(), ElementsAre("Found 3 displays", restoring, "first"));
}

TEST_F(RestorationTest, OneDisplayThatComesBackIsASuccess) {
    startWithAllOff();
    refuse({panel});

    controller->restoreSafeLayout("message");
    scheduler.advance(900ms);

    EXPECT_EQ(status(), "message");
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_FALSE(listed(panel).isOn);
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(RestorationTest, TheOutcomeIsCheckedFortyFiveHundredthsAfterTheLastEnable) {
    startWithAllOff();
    displaySwitch.setLatency(1s);

    controller->restoreSafeLayout("message");

    scheduler.advance(3449ms);
    EXPECT_TRUE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), restoring);
    scheduler.advance(1ms);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), "message");
}

TEST_F(RestorationTest, ASteppedWallClockDoesNotMoveTheCheckOfTheOutcome) {
    startWithAllOff();
    controller->restoreSafeLayout("message");
    scheduler.settle();

    system.wallClock.step(-3600);
    scheduler.advance(449ms);
    EXPECT_EQ(status(), restoring);
    system.wallClock.step(7200);
    scheduler.settle();
    EXPECT_EQ(status(), restoring);
    scheduler.advance(1ms);
    EXPECT_EQ(status(), "message");
}

TEST_F(RestorationTest, TheOutcomeIsCheckedInTheOrderOfTheEnables) {
    startWithAllOff();
    remember({secondExternal, firstExternal, panel});
    refuse({panel});
    controller->restoreSafeLayout("message");

    scheduler.advance(450ms);

    EXPECT_THAT(calls.onMainThread(),
                ElementsAre("moment", "online 5", "active 5", "online 1", "active 1"));
}

TEST_F(RestorationTest, AFailureSetsBothTextsBeforeTheRefreshStarts) {
    startWithAllOff();
    refuse(allThree);
    controller->restoreSafeLayout("message");
    scheduler.settle();
    recordStatuses();
    std::vector<std::optional<std::string>> errors;
    const auto subscription =
        controller->objectWillChange().subscribe([&] { errors.push_back(error()); });

    scheduler.advance(450ms);

    EXPECT_THAT(statuses(), ElementsAre(restoring, needsAttention, "Found 3 displays"));
    const std::string text =
        "No usable display could be restored automatically. Reconnect a monitor, then press "
        "Control–Option–Command–W.";
    // Before: error, status, refreshing, error cleared, refreshing, list, status.
    EXPECT_THAT(errors, ElementsAre(std::nullopt, text, text, text, std::nullopt, std::nullopt,
                                    std::nullopt));
}

TEST_F(RestorationTest, AFailureNamesTheChordOfTheSystemItRunsOn) {
    connect(allThree);
    Platform other = platform();
    other.words.wakeChord = "Shift+F12";
    controller = DisplayController::create(other);
    scheduler.settle();
    switchOffSilently(allThree);
    refuse(allThree);
    controller->restoreSafeLayout("message");

    const auto errors = atEachSignal([&] { return error(); }, [&] { scheduler.advance(450ms); });

    EXPECT_THAT(errors, Contains("No usable display could be restored automatically. Reconnect a "
                                 "monitor, then press Shift+F12."));
}

TEST_F(RestorationTest, TheTextsOfAFailureStayWhileARefreshIsRunningAlready) {
    startWithAllOff();
    refuse(allThree);
    controller->restoreSafeLayout("message");
    scheduler.advance(100ms);
    // As if one had been started whose enumeration has not come back.
    controller->setIsRefreshing(true);

    scheduler.advance(350ms);

    EXPECT_EQ(status(), needsAttention);
    EXPECT_TRUE(error().has_value());
}

TEST_F(RestorationTest, APendingRecoveryIsForgottenWithoutBeingCancelled) {
    restoreWithARecoveryPending();

    recordStatuses();
    scheduler.advance(100ms);
    EXPECT_THAT(statuses(), ElementsAre("message", restoring));
}

TEST_F(RestorationTest, AForgottenRecoveryIsNotPutOffByALaterOne) {
    restoreWithARecoveryPending();

    controller->scheduleTopologyRecovery();
    scheduler.advance(90ms);

    EXPECT_EQ(status(), restoring);
}

TEST_F(RestorationTest, TheOutcomeForADestroyedControllerIsDropped) {
    startWithAllOff();
    // A change would be reported, and the report keep the controller.
    refuse(allThree);
    controller->restoreSafeLayout("message");

    expectKeptByItsJobsAlone();

    EXPECT_THAT(calls.calls(), AllOf(Contains("5 on"), Contains("1 on"), Contains("3 on")));
}

TEST_F(RestorationTest, ThePassIsNotOnTheMainThread) {
    startWithAllOff();
    controller->restoreSafeLayout("message");

    scheduler.settle();

    EXPECT_THAT(calls.calls(), Contains("5 on"));
    EXPECT_THAT(calls.onMainThread(), IsEmpty());
}

}  // namespace
}  // namespace tavrel
