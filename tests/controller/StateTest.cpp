#include "controller/WakeAllNotification.h"
#include "tests/controller/ControllerTest.h"

namespace tavrel {
namespace {

using testing::IsEmpty;

using StateTest = ControllerTest;

TEST_F(StateTest, NothingIsListedAndARefreshIsRunningUntilTheFirstEnumerationEnds) {
    connect({panel});

    start();

    EXPECT_THAT(controller->displays(), IsEmpty());
    EXPECT_TRUE(controller->isRefreshing());
    EXPECT_EQ(status(), "Finding your displays…");
    EXPECT_EQ(error(), std::nullopt);
    EXPECT_FALSE(controller->isAutomaticRecoveryRunning());
    EXPECT_EQ(controller->suppressTopologyRestoreUntil(), WallTime::distantPast());
}

TEST_F(StateTest, TheCallbackIsRegisteredFromConstructionToDestruction) {
    start();
    EXPECT_TRUE(controller->displayCallbackRegistered());
    EXPECT_EQ(server.callbacks(), 1U);

    release();
    scheduler.settle();

    EXPECT_EQ(server.callbacks(), 0U);
}

class RefusingReports : public ReconfigurationReports {
public:
    ServerStatus registerCallback(DisplayReconfigurationCallback /*callback*/,
                                  void* /*userInfo*/) override {
        return serverStatus::failure;
    }
    ServerStatus removeCallback(DisplayReconfigurationCallback /*callback*/,
                                void* /*userInfo*/) override {
        ++removals;
        return serverStatus::success;
    }
    int removals = 0;
};

TEST_F(StateTest, ACallbackThatCouldNotBeRegisteredIsNotRemoved) {
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

    release();
    scheduler.settle();

    EXPECT_EQ(reports.removals, 0);
}

TEST_F(StateTest, EachWakeAllNotificationWakesAllOnce) {
    startWith({panel});

    for (int posted = 0; posted < 3; ++posted) {
        system.notificationCenter.post(wakeAllDisplays);
        scheduler.settle();
    }

    EXPECT_EQ(server.takeChanges(), switchedOn({panel, panel, panel}));
}

TEST_F(StateTest, NotificationsPostedAtOnceOrDuringAWakeWakeAllOnceEach) {
    startWith({panel});
    displaySwitch.setLatency(100ms);

    for (int posted = 0; posted < 3; ++posted) {
        system.notificationCenter.post(wakeAllDisplays);
    }
    scheduler.advance(50ms);
    system.notificationCenter.post(wakeAllDisplays);
    scheduler.advance(500ms);

    EXPECT_EQ(server.takeChanges(), switchedOn({panel, panel, panel, panel}));
}

TEST_F(StateTest, ANotificationOfAnotherNameWakesNothing) {
    startWith({panel});

    system.notificationCenter.post("local.display-control.something-else");
    scheduler.settle();

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, TicksAndNotificationsAfterDestructionDoNothing) {
    startWith({panel});
    switchOffSilently({panel});
    system.notificationCenter.post(wakeAllDisplays);

    release();
    scheduler.advance(10s);

    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, ANotificationOnItsWayAtDestructionDoesNothing) {
    startWith({panel});
    const std::weak_ptr<DisplayController> weak = controller;
    // Delivered just before the controller is released; its task comes just after.
    system.notificationCenter.post(wakeAllDisplays);
    scheduler.mainQueue().async([this] { release(); });

    scheduler.runMainTasks();

    EXPECT_TRUE(weak.expired());
    scheduler.advance(10s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, ATickOnItsWayAtDestructionDoesNothing) {
    startWith({panel});
    switchOffSilently({panel});
    std::weak_ptr<DisplayController> weak = controller;
    std::size_t onTheirWay = 0;
    // In the same moment as the first tick, after it and before its task.
    scheduler.mainQueue().asyncAfter(1s, [&] {
        onTheirWay = scheduler.pendingMainTasks();
        release();
    });

    scheduler.advance(1s);

    EXPECT_EQ(onTheirWay, 1U);
    EXPECT_TRUE(weak.expired());
    scheduler.advance(10s);
    EXPECT_THAT(server.takeChanges(), IsEmpty());
}

TEST_F(StateTest, ABackgroundJobKeepsTheControllerAliveAndTheMainThreadDestroysIt) {
    connect({panel});
    start();

    const auto weak = release();

    EXPECT_FALSE(weak.expired());
    scheduler.runBackgroundJobs();
    // The job has let go on its own thread; the callback is still registered, so nothing
    // was destroyed there.
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(server.callbacks(), 1U);
    scheduler.runMainTasks();
    EXPECT_EQ(server.callbacks(), 0U);
}

}  // namespace
}  // namespace tavrel
