#include <thread>

#include "controller/WakeAllNotification.h"
#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using StateTest = ControllerTest;

TEST_F(StateTest, beforeTheFirstEnumerationCompletesNothingIsListedAndARefreshIsRunning) {
    connectPanel();
    start();
    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_EQ(status(), "Finding your displays…");
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
}

TEST_F(StateTest, constructionRegistersTheCallback) {
    start();
    EXPECT_TRUE(controller->displayCallbackRegistered());
    EXPECT_EQ(server.callbacks(), 1U);
    controller.reset();
    scheduler.settle();
    EXPECT_EQ(server.callbacks(), 0U);
}

class RefusingReports : public ReconfigurationReports {
public:
    ServerStatus registerCallback(DisplayReconfigurationCallback /*callback*/,
                                  void* /*userInfo*/) override {
        return 1000;
    }
    ServerStatus removeCallback(DisplayReconfigurationCallback /*callback*/,
                                void* /*userInfo*/) override {
        ++removals;
        return 0;
    }
    int removals = 0;
};

TEST_F(StateTest, destructionDoesNotRemoveACallbackThatCouldNotBeRegistered) {
    RefusingReports reports;
    const Platform platform = system.platform();
    controller = DisplayController::create({.displaySwitch = platform.displaySwitch,
                                            .queries = platform.queries,
                                            .reports = reports,
                                            .userDefaults = platform.userDefaults,
                                            .wallClock = platform.wallClock,
                                            .mainQueue = platform.mainQueue,
                                            .backgroundQueue = platform.backgroundQueue,
                                            .notificationCenter = platform.notificationCenter});
    scheduler.settle();
    EXPECT_FALSE(controller->displayCallbackRegistered());
    EXPECT_EQ(status(), "Found 0 displays");
    controller.reset();
    scheduler.settle();
    EXPECT_EQ(reports.removals, 0);
}

TEST_F(StateTest, eachWakeAllNotificationLeadsToOneWakeAll) {
    connectPanel();
    startAndSettle();
    for (int posted = 0; posted < 3; ++posted) {
        system.notificationCenter.post(wakeAllDisplays);
        scheduler.settle();
    }
    EXPECT_THAT(server.takeChanges(),
                ElementsAre(Pair(panel, true), Pair(panel, true), Pair(panel, true)));
}

TEST_F(StateTest, aNotificationOfAnotherNameWakesNothing) {
    connectPanel();
    startAndSettle();
    system.notificationCenter.post("local.display-control.something-else");
    scheduler.settle();
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, afterDestructionAPendingTickOrNotificationDoesNothing) {
    connectPanel();
    startAndSettle();
    switchOffSilently(panel);
    system.notificationCenter.post(wakeAllDisplays);
    controller.reset();
    scheduler.advance(10s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, whatWasHoppingToTheMainThreadAtDestructionDoesNothing) {
    connectPanel();
    startAndSettle();
    switchOffSilently(panel);
    scheduler.advance(900ms);
    // The tick has fired, and the posting been delivered, but their tasks have not run.
    system.notificationCenter.post(wakeAllDisplays);
    std::weak_ptr<DisplayController> weak = controller;
    system.scheduler.mainQueue().async([this] { controller.reset(); });
    scheduler.runMainTasks();
    EXPECT_TRUE(weak.expired());
    scheduler.advance(10s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, aBackgroundJobKeepsTheControllerAliveAndTheMainThreadDestroysIt) {
    connectPanel();
    start();
    const std::weak_ptr<DisplayController> weak = controller;
    controller.reset();
    EXPECT_FALSE(weak.expired());
    scheduler.runBackgroundJobs();
    // The job has let go on its own thread; the callback is still registered, so nothing
    // was destroyed there (the destructor would also have asserted).
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(server.callbacks(), 1U);
    scheduler.runMainTasks();
    EXPECT_EQ(server.callbacks(), 0U);
}

#ifndef NDEBUG
using StateDeathTest = ControllerTest;

TEST_F(StateDeathTest, useFromAnotherThreadIsCaughtInADebugBuild) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    startAndSettle();
    EXPECT_DEATH(std::thread([&] { controller->wakeAll(); }).join(), "isCurrent");
}
#endif

}  // namespace
}  // namespace tavrel
