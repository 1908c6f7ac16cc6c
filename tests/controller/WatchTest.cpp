#include <thread>

#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WatchTest : public ControllerTest {
protected:
    void SetUp() override {
        startWith(both);
        recordStatuses();
    }

    /// A report that arrives, and gets to the main thread, now.
    void report(std::uint32_t flags, DisplayID display = panel) {
        server.report(display, flags);
        scheduler.settle();
    }

    /// Opens the suppression by a switch that fails, so that no report comes from it.
    void suppress() {
        displaySwitch.refuse(firstExternal, serverStatus::cannotComplete);
        set(firstExternal, false);
        scheduler.settle();
        displaySwitch.refuse(firstExternal, serverStatus::success);
    }

    const DisplayIDs both{panel, firstExternal};
    const std::string atFirst = "Both displays are ready";
};

TEST_F(WatchTest, ABeginReportLeadsToNothingWhateverElseItSays) {
    switchOffSilently(both);

    report(displayChange::beginConfiguration);
    report(displayChange::beginConfiguration | displayChange::add);
    report(displayChange::beginConfiguration | displayChange::remove);
    scheduler.advance(999ms);

    EXPECT_THAT(statuses(), ElementsAre(atFirst));
}

TEST_F(WatchTest, ABurstOfAddAndRemoveReportsLeadsToOneRestorationAfterTheLast) {
    report(displayChange::add);
    scheduler.advance(200ms);
    report(displayChange::remove);
    scheduler.advance(200ms);
    report(displayChange::add);

    scheduler.advance(599ms);
    EXPECT_THAT(statuses(), ElementsAre(atFirst));
    scheduler.advance(1ms);
    EXPECT_THAT(statuses(), ElementsAre(atFirst, restoring));
    scheduler.advance(10s);
    EXPECT_THAT(statuses(), ElementsAre(atFirst, restoring, restored));
}

TEST_F(WatchTest, AnAddOrARemoveBitAloneStartsTheDebouncedRecovery) {
    for (const std::uint32_t flag : {displayChange::add, displayChange::remove}) {
        recordStatuses();

        report(flag);
        scheduler.advance(600ms);

        EXPECT_EQ(status(), restoring) << flag;
        scheduler.advance(10s);
    }
}

TEST_F(WatchTest, ASteppedWallClockDoesNotMoveTheDebounce) {
    report(displayChange::add);

    system.wallClock.step(3600);
    scheduler.advance(599ms);
    EXPECT_EQ(status(), atFirst);
    system.wallClock.step(-7200);
    scheduler.advance(1ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(WatchTest, AnAddReportDuringTheSuppressionOnlyLeadsToTheLostDisplayCheck) {
    controller->restoreSafeLayout("first");
    scheduler.advance(1s);
    recordStatuses();

    report(displayChange::add);
    scheduler.advance(5s);

    EXPECT_THAT(statuses(), ElementsAre("first"));
}

TEST_F(WatchTest, AnAddOrRemoveReportDuringTheSuppressionLeadsToTheLostDisplayCheck) {
    suppress();

    for (const std::uint32_t flag : {displayChange::add, displayChange::remove}) {
        const std::size_t reads = system.userDefaults.reads();
        report(flag);

        scheduler.advance(349ms);
        EXPECT_EQ(system.userDefaults.reads(), reads) << flag;
        scheduler.advance(1ms);
        EXPECT_EQ(system.userDefaults.reads(), reads + 1) << flag;
    }
}

TEST_F(WatchTest, AnAddReportDuringTheSuppressionWithNothingUsableRestoresAfterThatCheck) {
    suppress();
    switchOffSilently(both);

    report(displayChange::add);

    scheduler.advance(349ms);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_EQ(server.takeChanges(), switchedOn(both));
    scheduler.advance(450ms);
    EXPECT_EQ(status(), recovered);
}

TEST_F(WatchTest, TheLostDisplayCheckDoesNothingDuringARestoration) {
    displaySwitch.setLatency(3s);
    switchOffSilently(both);
    controller->restoreSafeLayout("first");
    scheduler.advance(1s);

    report(displayChange::add);
    scheduler.advance(400ms);

    EXPECT_THAT(statuses(), ElementsAre(atFirst, restoring));
}

TEST_F(WatchTest, TheSuppressionEndsAtItsVeryMoment) {
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

TEST_F(WatchTest, TheSuppressionFollowsTheWallClock) {
    set(firstExternal, false);
    scheduler.advance(10s);

    system.wallClock.step(-11);
    report(displayChange::remove);
    scheduler.advance(700ms);

    EXPECT_EQ(status(), "External Display is off");
}

TEST_F(WatchTest, AnyOtherReportWithAUsableDisplayLeadsToNothing) {
    for (std::uint32_t bit = 0x2; bit <= 0x1000; bit <<= 1) {
        if (bit != displayChange::add && bit != displayChange::remove) {
            report(bit);
        }
    }
    scheduler.advance(5s);

    EXPECT_THAT(statuses(), ElementsAre(atFirst));
}

TEST_F(WatchTest, EachReportLeadsToALostDisplayCheckOfItsOwn) {
    const std::size_t reads = system.userDefaults.reads();

    report(displayChange::moved);
    report(displayChange::moved);
    report(displayChange::setMode);
    scheduler.advance(350ms);

    EXPECT_EQ(system.userDefaults.reads() - reads, 3U);
}

TEST_F(WatchTest, TheLostDisplayCheckAsksInTheOrderTheDisplaysAreStoredIn) {
    remember({firstExternal, panel});
    switchOffSilently({firstExternal});

    report(displayChange::moved);
    scheduler.advance(350ms);

    EXPECT_THAT(calls.calls(),
                ElementsAre("moment", "online 1", "active 1", "online 5", "active 5"));
}

TEST_F(WatchTest, TheDisplayThatAReportNamesHasNoInfluence) {
    for (const DisplayID display : {DisplayID{0}, panel, DisplayID{4294967295U}}) {
        recordStatuses();

        report(displayChange::add, display);
        scheduler.advance(600ms);

        EXPECT_EQ(status(), restoring) << display;
        scheduler.advance(10s);
    }
}

TEST_F(WatchTest, WithAnEmptyRegistryAnAddReportOnlyRefreshesAndAnotherDoesNothing) {
    system.userDefaults.remove(DisplayRegistry::storageKey);

    report(displayChange::disabled);
    EXPECT_EQ(signalsDuring([&] { scheduler.advance(350ms); }), 0);

    report(displayChange::add);
    EXPECT_GT(signalsDuring([&] { scheduler.advance(600ms); }), 0);
    EXPECT_THAT(statuses(), ElementsAre(atFirst));
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(WatchTest, TheCallbackIgnoresANullUserPointer) {
    displayReconfigurationCallback(panel, displayChange::add, nullptr);
    scheduler.advance(5s);

    EXPECT_THAT(statuses(), ElementsAre(atFirst));
}

TEST_F(WatchTest, TheCallbackMayComeFromAnyThreadAndOnlyHopsToTheMainThread) {
    const std::size_t pending = scheduler.pendingMainTasks();

    std::thread([&] { server.report(panel, displayChange::add); }).join();

    EXPECT_EQ(scheduler.pendingMainTasks(), pending + 1);
    scheduler.advance(600ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(WatchTest, AReportOnItsWayKeepsTheControllerUntilItHasArrived) {
    server.report(panel, displayChange::add);

    const auto weak = release();

    EXPECT_FALSE(weak.expired());
    scheduler.settle();
    EXPECT_TRUE(weak.expired());
}

TEST_F(WatchTest, APendingRecoveryOrCheckDoesNotKeepTheControllerAlive) {
    switchOffSilently(both);
    report(displayChange::add);
    report(displayChange::moved);

    const auto weak = release();

    EXPECT_TRUE(weak.expired());
    scheduler.advance(5s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

}  // namespace
}  // namespace tavrel
