#include <thread>

#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* restoring = "Display setup changed — restoring a safe layout…";
constexpr const char* restored = "Display setup changed — available screens restored";
constexpr const char* recovered = "Lost display recovered automatically";

class WatchTest : public ControllerTest {
protected:
    void SetUp() override {
        connectPanel();
        server.connect({.id = firstExternal});
        startAndSettle();
        recordStatuses();
    }

    /// A report that arrives, and gets to the main thread, now.
    void report(std::uint32_t flags, DisplayID display = panel) {
        server.report(display, flags);
        scheduler.settle();
    }
};

TEST_F(WatchTest, aBeginReportChangesAndSchedulesNothingWhateverElseItSays) {
    switchOffSilently(panel);
    switchOffSilently(firstExternal);
    report(displayChange::beginConfiguration);
    report(displayChange::beginConfiguration | displayChange::add);
    report(displayChange::beginConfiguration | displayChange::remove);
    scheduler.advance(999ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready"));
}

TEST_F(WatchTest, aBurstOfAddAndRemoveReportsLeadsToOneRestorationAfterTheLast) {
    report(displayChange::add);
    scheduler.advance(200ms);
    report(displayChange::remove);
    scheduler.advance(200ms);
    report(displayChange::add);
    scheduler.advance(599ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready"));
    scheduler.advance(1ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready", restoring));
    scheduler.advance(10s);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready", restoring, restored));
}

TEST_F(WatchTest, eachAddAndEachRemoveBitAloneStartsTheDebouncedRecovery) {
    for (const std::uint32_t flag : {displayChange::add, displayChange::remove}) {
        recordStatuses();
        report(flag);
        scheduler.advance(600ms);
        EXPECT_EQ(status(), restoring) << flag;
        scheduler.advance(10s);
    }
}

TEST_F(WatchTest, aSteppedWallClockDoesNotMoveTheDebounce) {
    report(displayChange::add);
    system.wallClock.step(3600);
    scheduler.advance(599ms);
    EXPECT_EQ(status(), "Both displays are ready");
    system.wallClock.step(-7200);
    scheduler.advance(1ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(WatchTest, anAddReportWithinTheSuppressionOnlyLeadsToTheLighterCheck) {
    controller->restoreSafeLayout("first");
    scheduler.advance(1s);
    recordStatuses();
    report(displayChange::add);
    scheduler.advance(5s);
    EXPECT_THAT(statuses(), ElementsAre("first"));
}

TEST_F(WatchTest, theLighterCheckDoesNothingWhileARestorationIsRunning) {
    lifecycle.setLatency(3s);
    switchOffSilently(panel);
    switchOffSilently(firstExternal);
    controller->restoreSafeLayout("first");
    scheduler.advance(1s);
    report(displayChange::add);
    scheduler.advance(400ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready", restoring));
}

TEST_F(WatchTest, theSuppressionEndsAtItsVeryMoment) {
    set(firstExternal, false);
    scheduler.advance(2s - 1ms);
    report(displayChange::remove);
    scheduler.advance(700ms);
    EXPECT_EQ(status(), "External Display is off");
    // A clock that shows exactly the end is no longer before it.
    system.wallClock.step(controller->suppressTopologyRestoreUntil() - system.wallClock.now());
    report(displayChange::remove);
    scheduler.advance(600ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(WatchTest, theSuppressionFollowsTheWallClock) {
    set(firstExternal, false);
    scheduler.advance(10s);
    system.wallClock.step(-11);
    report(displayChange::remove);
    scheduler.advance(700ms);
    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(WatchTest, anyOtherReportWithAUsableDisplayLeadsToNothing) {
    for (std::uint32_t bit = 0x2; bit <= 0x1000; bit <<= 1) {
        if (bit != displayChange::add && bit != displayChange::remove) {
            report(bit);
        }
    }
    scheduler.advance(5s);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready"));
}

TEST_F(WatchTest, anyOtherReportWithNothingUsableRestoresAfterThirtyFiveHundredths) {
    scheduler.advance(100ms);
    switchOffSilently(panel);
    switchOffSilently(firstExternal);
    report(displayChange::disabled);
    scheduler.advance(349ms);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true)));
    scheduler.advance(450ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready", restoring, recovered));
}

TEST_F(WatchTest, anAddReportWithNothingUsableRestoresAfterTheDebounceWithItsMessage) {
    scheduler.advance(100ms);
    switchOffSilently(panel);
    switchOffSilently(firstExternal);
    report(displayChange::remove);
    scheduler.advance(599ms);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true)));
    scheduler.advance(450ms);
    EXPECT_EQ(status(), restored);
}

TEST_F(WatchTest, checksAreNotCoalesced) {
    const std::size_t reads = system.userDefaults.reads();
    report(displayChange::moved);
    report(displayChange::moved);
    report(displayChange::setMode);
    scheduler.advance(350ms);
    EXPECT_EQ(system.userDefaults.reads() - reads, 3U);
}

TEST_F(WatchTest, theDisplayThatAReportNamesHasNoInfluence) {
    for (const DisplayID display : {DisplayID{0}, panel, DisplayID{4294967295U}}) {
        recordStatuses();
        report(displayChange::add, display);
        scheduler.advance(600ms);
        EXPECT_EQ(status(), restoring) << display;
        scheduler.advance(10s);
    }
}

TEST_F(WatchTest, withAnEmptyRegistryAnAddReportOnlyRefreshesAndAnotherNothing) {
    system.userDefaults.remove(DisplayRegistry::storageKey);
    report(displayChange::disabled);
    scheduler.advance(350ms);
    EXPECT_FALSE(controller->isRefreshing());
    report(displayChange::add);
    int refreshes = 0;
    const auto subscription = controller->objectWillChange().subscribe([&] { ++refreshes; });
    scheduler.advance(600ms);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready"));
    EXPECT_GT(refreshes, 0);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchTest, aNullUserPointerIsIgnored) {
    displayReconfigurationCallback(panel, displayChange::add, nullptr);
    scheduler.advance(5s);
    EXPECT_THAT(statuses(), ElementsAre("Both displays are ready"));
}

TEST_F(WatchTest, theCallbackOnlyHopsAndMayComeFromAnyThread) {
    const std::size_t pending = scheduler.pendingMainTasks();
    std::thread([&] { server.report(panel, displayChange::add); }).join();
    EXPECT_EQ(scheduler.pendingMainTasks(), pending + 1);
    scheduler.advance(600ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(WatchTest, aReportOnItsWayKeepsTheControllerUntilItHasArrived) {
    server.report(panel, displayChange::add);
    const std::weak_ptr<DisplayController> weak = controller;
    forgetStatuses();
    controller.reset();
    EXPECT_FALSE(weak.expired());
    scheduler.settle();
    EXPECT_TRUE(weak.expired());
}

TEST_F(WatchTest, aPendingRecoveryOrCheckDoesNotKeepTheControllerAlive) {
    switchOffSilently(panel);
    switchOffSilently(firstExternal);
    report(displayChange::add);
    report(displayChange::moved);
    const std::weak_ptr<DisplayController> weak = controller;
    forgetStatuses();
    controller.reset();
    EXPECT_TRUE(weak.expired());
    scheduler.advance(5s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

}  // namespace
}  // namespace tavrel
