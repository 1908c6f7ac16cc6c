#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* restoring = "Display setup changed — restoring a safe layout…";
constexpr const char* recovered = "Lost display recovered automatically";

using UsableDisplayGuardTest = ControllerTest;

TEST_F(UsableDisplayGuardTest, withAnEmptyRegistryTheTimerNeverStartsARestoration) {
    startAndSettle();
    recordStatuses();
    scheduler.advance(1h);
    EXPECT_THAT(statuses(), ElementsAre("Found 0 displays"));
}

TEST_F(UsableDisplayGuardTest, withAKnownDisplayUsableTicksDoNothing) {
    connectPanel();
    connectExternals();
    startAndSettle();
    switchOffSilently(firstExternal);
    server.replaceSilently({.id = secondExternal, .connected = false});
    recordStatuses();
    scheduler.advance(1h);
    EXPECT_THAT(statuses(), ElementsAre("Found 3 displays"));
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(UsableDisplayGuardTest, ATickAsksOneMomentAndStopsAtTheFirstUsableDisplay) {
    connectPanel();
    connectExternals();
    startAndSettle();
    const std::uint64_t queries = server.queries();
    const std::uint64_t moments = server.moments();

    scheduler.advance(1s);

    EXPECT_EQ(server.queries() - queries, 2U);
    EXPECT_EQ(server.moments() - moments, 1U);
}

TEST_F(UsableDisplayGuardTest, aDisplayThatIsConnectedButNotRememberedDoesNotCount) {
    connectPanel();
    startAndSettle();
    switchOffSilently(panel);
    server.replaceSilently({.id = firstExternal});
    scheduler.advance(1s);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true)));
}

TEST_F(UsableDisplayGuardTest, aTickRestoresALostLayout) {
    connectPanel();
    startAndSettle();
    switchOffSilently(panel);
    recordStatuses();
    scheduler.advance(999ms);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
    scheduler.advance(1ms);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true)));
    scheduler.advance(450ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", restoring, recovered));
}

TEST_F(UsableDisplayGuardTest, ticksDuringARestorationDoNothingAndTheNextOneTriesAgain) {
    connectPanel();
    startAndSettle();
    switchOffSilently(panel);
    lifecycle.refuse(panel, 1004);
    lifecycle.setLatency(2s);
    recordStatuses();
    scheduler.advance(1s);
    scheduler.advance(2449ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", restoring));
    scheduler.advance(1ms);
    EXPECT_THAT(statuses(), ElementsAre("Found 1 display", restoring,
                                        "Display recovery needs attention", "Found 1 display"));
    scheduler.advance(549ms);
    EXPECT_EQ(status(), "Found 1 display");
    scheduler.advance(1ms);
    EXPECT_EQ(status(), restoring);
}

TEST_F(UsableDisplayGuardTest, theGuardDoesNotCareForTheSuppression) {
    connectPanel();
    server.connect({.id = firstExternal});
    startAndSettle();
    set(firstExternal, false);
    scheduler.settle();
    switchOffSilently(panel);
    server.takeChanges();
    scheduler.advance(1s);
    EXPECT_LT(system.wallClock.now(), controller->suppressTopologyRestoreUntil());
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true), Pair(firstExternal, true)));
}

TEST_F(UsableDisplayGuardTest, theTimerGoesOnThroughASteppedWallClock) {
    connectPanel();
    startAndSettle();
    system.wallClock.step(-86400);
    switchOffSilently(panel);
    scheduler.advance(1s);
    EXPECT_THAT(server.takeChanges(), ElementsAre(Pair(panel, true)));
}

}  // namespace
}  // namespace tavrel
