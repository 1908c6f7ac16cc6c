#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using UsableDisplayGuardTest = ControllerTest;

TEST_F(UsableDisplayGuardTest, WithAnEmptyRegistryTicksDoNothing) {
    startWith({});

    // Not even a refresh.
    EXPECT_EQ(signalsDuring([&] { scheduler.advance(1h); }), 0);
}

TEST_F(UsableDisplayGuardTest, WithOneRememberedDisplayUsableTicksDoNothing) {
    startWith(allThree);
    switchOffSilently({firstExternal});
    unplugSilently(secondExternal);
    recordStatuses();

    scheduler.advance(1h);

    EXPECT_THAT(statuses(), ElementsAre("Found 3 displays"));
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(UsableDisplayGuardTest, ATickAsksOneMomentAndStopsAtTheFirstUsableDisplay) {
    startWith(allThree);
    const std::uint64_t queries = server.queries();
    const std::uint64_t moments = server.moments();

    scheduler.advance(1s);

    EXPECT_EQ(server.queries() - queries, 2U);
    EXPECT_EQ(server.moments() - moments, 1U);
}

TEST_F(UsableDisplayGuardTest, ATickAsksAboutTheDisplaysInTheOrderTheyAreStoredIn) {
    startWith(allThree);
    remember({secondExternal, firstExternal, panel});
    unplugSilently(secondExternal);

    scheduler.advance(1s);

    EXPECT_THAT(calls.calls(), ElementsAre("moment", "online 3", "online 1", "active 1"));
}

TEST_F(UsableDisplayGuardTest, AConnectedDisplayThatIsNotRememberedDoesNotCount) {
    startWith({panel});
    switchOffSilently({panel});
    server.replaceSilently({.id = firstExternal});

    scheduler.advance(1s);

    EXPECT_EQ(server.takeChanges(), switchedOn({panel}));
}

TEST_F(UsableDisplayGuardTest, ATickEachSecondRestoresALostLayout) {
    startWith({panel});
    switchOffSilently({panel});
    recordStatuses();

    scheduler.advance(999ms);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_EQ(server.takeChanges(), switchedOn({panel}));
    scheduler.advance(450ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", restoring, recovered));
}

TEST_F(UsableDisplayGuardTest, TicksDuringARestorationDoNothingAndTheNextOneTriesAgain) {
    startWith({panel});
    switchOffSilently({panel});
    displaySwitch.refuse(panel, serverStatus::cannotComplete);
    displaySwitch.setLatency(2s);
    recordStatuses();

    scheduler.advance(1s);
    scheduler.advance(2449ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", restoring));
    scheduler.advance(1ms);
    EXPECT_THAT(statuses(),
                ElementsAre("Found 1 display", restoring, needsAttention, "Found 1 display"));
    scheduler.advance(549ms);
    EXPECT_EQ(status(), "Found 1 display");
    scheduler.advance(1ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(UsableDisplayGuardTest, TheSuppressionDoesNotHoldBackATick) {
    startWith({panel, firstExternal});
    set(firstExternal, false);
    scheduler.settle();
    switchOffSilently({panel});
    server.takeChanges();

    scheduler.advance(1s);

    EXPECT_LT(system.wallClock.now(), controller->suppressTopologyRestoreUntil());
    EXPECT_EQ(server.takeChanges(), switchedOn({panel, firstExternal}));
}

TEST_F(UsableDisplayGuardTest, ASteppedWallClockDoesNotMoveTheTicks) {
    startWith({panel});
    switchOffSilently({panel});

    system.wallClock.step(-86400);
    scheduler.advance(1s);

    EXPECT_EQ(server.takeChanges(), switchedOn({panel}));
}

}  // namespace
}  // namespace tavrel
