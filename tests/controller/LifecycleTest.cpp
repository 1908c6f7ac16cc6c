// In which order the controller gets hold of what it needs, and lets go of it.
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controller/WakeAllNotification.h"
#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"
#include "tests/controller/ControllerTest.h"
#include "tests/controller/ForwardingMainQueue.h"

namespace tavrel {
namespace {

using testing::ElementsAre;

/// Steps of the controller's life, each with whether it observes the notification then, and
/// whether the recovery that was pending has been cancelled.
class Steps {
    class DroppingQueue : public ForwardingMainQueue {
    public:
        using ForwardingMainQueue::ForwardingMainQueue;
        void async(Task /*task*/) override { ++count; }
        int count = 0;
    };

public:
    explicit Steps(MainQueue& mainQueue) : dropped_(mainQueue) {}

    void note(const std::string& step) {
        steps_.push_back(step + (isObserved() ? ", observed" : "") +
                         (pending_ != nullptr && pending_->isCancelled() ? ", cancelled" : ""));
    }
    /// Delivers nothing.
    NotificationCenter& center() { return center_; }

    void notePending(std::shared_ptr<WorkItem> item) { pending_ = std::move(item); }
    bool hasPending() const { return pending_ != nullptr; }

    std::vector<std::string> take() { return std::exchange(steps_, {}); }

    /// Whether somebody would get the notification if it were posted now.
    bool isObserved() {
        const int before = dropped_.count;
        center_.post(wakeAllDisplays);
        return dropped_.count > before;
    }

private:
    DroppingQueue dropped_;
    NotificationCenter center_{dropped_};
    std::vector<std::string> steps_;
    std::shared_ptr<WorkItem> pending_;
};

class NotedReports : public ReconfigurationReports {
public:
    explicit NotedReports(Steps& steps) : steps_(steps) {}

    ServerStatus registerCallback(DisplayReconfigurationCallback /*callback*/,
                                  void* /*userInfo*/) override {
        steps_.note("callback registered");
        return serverStatus::success;
    }
    ServerStatus removeCallback(DisplayReconfigurationCallback /*callback*/,
                                void* /*userInfo*/) override {
        steps_.note("callback removed");
        return serverStatus::success;
    }

private:
    Steps& steps_;
};

class NotedMainQueue : public ForwardingMainQueue {
public:
    NotedMainQueue(MainQueue& inner, Steps& steps) : ForwardingMainQueue(inner), steps_(steps) {}

    void asyncAfter(Delay delay, Task task) override {
        if (const auto* work = task.target<WorkItemTask>()) {
            steps_.notePending(work->item);
        }
        ForwardingMainQueue::asyncAfter(delay, std::move(task));
    }

    std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) override {
        steps_.note("timer started");
        return std::make_unique<Timer>(ForwardingMainQueue::repeat(interval, std::move(tick)),
                                       steps_);
    }

private:
    class Timer : public RepeatingTimer {
    public:
        Timer(std::unique_ptr<RepeatingTimer> inner, Steps& steps)
            : inner_(std::move(inner)), steps_(steps) {}
        void invalidate() override {
            steps_.note("timer invalidated");
            inner_->invalidate();
        }

    private:
        std::unique_ptr<RepeatingTimer> inner_;
        Steps& steps_;
    };

    Steps& steps_;
};

class NotedBackgroundQueue : public BackgroundQueue {
public:
    NotedBackgroundQueue(BackgroundQueue& inner, Steps& steps) : inner_(inner), steps_(steps) {}

    void async(Task job) override {
        steps_.note("refresh started");
        inner_.async(std::move(job));
    }

private:
    BackgroundQueue& inner_;
    Steps& steps_;
};

class LifecycleTest : public ControllerTest {
protected:
    ~LifecycleTest() override { end(); }

    void begin() {
        const Platform whole = system.platform();
        controller = DisplayController::create({.displaySwitch = whole.displaySwitch,
                                                .queries = whole.queries,
                                                .reports = reports,
                                                .userDefaults = whole.userDefaults,
                                                .wallClock = whole.wallClock,
                                                .mainQueue = mainQueue,
                                                .backgroundQueue = backgroundQueue,
                                                .notificationCenter = steps.center()});
    }

    /// Lets the controller's last job end, and it be destroyed.
    void end() {
        release();
        scheduler.settle();
    }

    Steps steps{scheduler.mainQueue()};
    NotedReports reports{steps};
    NotedMainQueue mainQueue{scheduler.mainQueue(), steps};
    NotedBackgroundQueue backgroundQueue{scheduler.backgroundQueue(), steps};
};

TEST_F(LifecycleTest, ObserverCallbackAndTimerAreThereInThisOrderBeforeTheFirstRefresh) {
    begin();

    EXPECT_THAT(steps.take(), ElementsAre("callback registered, observed",
                                          "timer started, observed", "refresh started, observed"));
}

TEST_F(LifecycleTest, TimerCallbackAndObserverEndInThisOrder) {
    begin();
    scheduler.settle();
    steps.take();

    end();

    EXPECT_THAT(steps.take(),
                ElementsAre("timer invalidated, observed", "callback removed, observed"));
    EXPECT_FALSE(steps.isObserved());
}

TEST_F(LifecycleTest, APendingRecoveryIsCancelledBeforeAnythingElseEnds) {
    begin();
    scheduler.settle();
    controller->scheduleTopologyRecovery();
    ASSERT_TRUE(steps.hasPending());
    steps.take();

    end();

    EXPECT_THAT(steps.take(), ElementsAre("timer invalidated, observed, cancelled",
                                          "callback removed, observed, cancelled"));
}

}  // namespace
}  // namespace tavrel
