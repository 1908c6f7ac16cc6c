#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr const char* restoring = "Display setup changed — restoring a safe layout…";
constexpr const char* attention = "Display recovery needs attention";

class RestorationTest : public ControllerTest {
protected:
    void startWithAllOff() {
        connectPanel();
        connectExternals();
        startAndSettle();
        for (const DisplayID display : {panel, firstExternal, secondExternal}) {
            switchOffSilently(display);
        }
    }
};

TEST_F(RestorationTest, withAnEmptyRegistryItOnlyRefreshes) {
    startAndSettle();
    controller->restoreSafeLayout("message");
    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), "Found 0 displays");
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
    scheduler.settle();
    EXPECT_EQ(status(), "Found 0 displays");
}

TEST_F(RestorationTest, itStartsBySayingSoAndOpensTheSuppression) {
    startWithAllOff();
    controller->setErrorMessage("old");
    controller->restoreSafeLayout("message");
    EXPECT_TRUE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), system.wallClock.now() + 2.0);
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_EQ(status(), restoring);
}

TEST_F(RestorationTest, candidatesAreEnabledBuiltInFirstThenByIdentifier) {
    startWithAllOff();
    controller->restoreSafeLayout("message");
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true),
                                                  Pair(secondExternal, true)));
}

TEST_F(RestorationTest, aDisplayThatIsOnlineAndActiveIsLeftAloneAndAnOfflineOneIsNot) {
    startWithAllOff();
    server.replaceSilently({.id = secondExternal, .connected = false});
    server.replaceSilently({.id = panel, .builtIn = true});
    controller->restoreSafeLayout("message");
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(firstExternal, true), Pair(secondExternal, true)));
}

TEST_F(RestorationTest, aSecondCallWhileOneIsRunningDoesNothingWhateverItsMessage) {
    startWithAllOff();
    recordStatuses();
    controller->restoreSafeLayout("first");
    controller->restoreSafeLayout("second");
    scheduler.advance(900ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 3 displays", restoring, "first"));
}

TEST_F(RestorationTest, oneThatComesBackIsASuccess) {
    startWithAllOff();
    lifecycle.refuse(panel, 1004);
    controller->restoreSafeLayout("message");
    scheduler.advance(900ms);
    EXPECT_EQ(status(), "message");
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_FALSE(listed(panel).isOn);
    EXPECT_TRUE(listed(firstExternal).isOn);
}

TEST_F(RestorationTest, verificationComesFortyFiveHundredthsAfterTheEndOfThePass) {
    startWithAllOff();
    lifecycle.setLatency(1s);
    controller->restoreSafeLayout("message");
    scheduler.advance(3449ms);
    EXPECT_TRUE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), restoring);
    scheduler.advance(1ms);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(status(), "message");
}

TEST_F(RestorationTest, aSteppedWallClockDoesNotMoveTheVerification) {
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

TEST_F(RestorationTest, whenNothingComesBackBothTextsStandBeforeTheRefreshStarts) {
    startWithAllOff();
    for (const DisplayID display : {panel, firstExternal, secondExternal}) {
        lifecycle.refuse(display, 1004);
    }
    std::vector<std::optional<std::string>> errors;
    controller->restoreSafeLayout("message");
    scheduler.settle();
    recordStatuses();
    const auto subscription =
        controller->objectWillChange().subscribe([&] { errors.push_back(error()); });
    scheduler.advance(450ms);
    EXPECT_THAT(statuses(), ElementsAre(restoring, attention, "Found 3 displays"));
    const std::string text =
        "No usable display could be restored automatically. Reconnect a monitor, then press "
        "Control–Option–Command–W.";
    // Before: error, status, refreshing, error cleared, refreshing, list, status.
    EXPECT_THAT(errors, ElementsAre(std::nullopt, text, text, text, std::nullopt, std::nullopt,
                                    std::nullopt));
}

TEST_F(RestorationTest, theFailureTextsStayWhileARefreshIsAlreadyRunning) {
    startWithAllOff();
    for (const DisplayID display : {panel, firstExternal, secondExternal}) {
        lifecycle.refuse(display, 1004);
    }
    controller->restoreSafeLayout("message");
    scheduler.advance(100ms);
    // As if one had been started whose enumeration has not come back.
    controller->setIsRefreshing(true);
    scheduler.advance(350ms);
    EXPECT_EQ(status(), attention);
    EXPECT_TRUE(error().has_value());
}

TEST_F(RestorationTest, thePendingRecoveryIsForgottenWithoutBeingCancelled) {
    startWithAllOff();
    controller->scheduleTopologyRecovery();
    scheduler.advance(10ms);
    controller->restoreSafeLayout("message");
    scheduler.advance(500ms);
    EXPECT_EQ(status(), "message");
    recordStatuses();
    scheduler.advance(100ms);
    EXPECT_THAT(statuses(), ElementsAre("message", restoring));
}

TEST_F(RestorationTest, theOutcomeForAControllerThatHasGoneIsDropped) {
    startWithAllOff();
    controller->restoreSafeLayout("message");
    controller.reset();
    scheduler.advance(10s);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true),
                                                  Pair(secondExternal, true)));
    EXPECT_EQ(server.callbacks(), 0U);
}

}  // namespace
}  // namespace tavrel
