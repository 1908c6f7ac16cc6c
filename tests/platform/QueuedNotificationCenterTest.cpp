#include <thread>

#include <gtest/gtest.h>

#include "platform/QueuedNotificationCenter.h"
#include "platform/simulated/SimulatedScheduler.h"

namespace tavrel {
namespace {

class QueuedNotificationCenterTest : public testing::Test {
protected:
    SimulatedScheduler scheduler;
    QueuedNotificationCenter center{scheduler.mainQueue()};
    int calls = 0;
};

TEST_F(QueuedNotificationCenterTest, eachPostingReachesEachObserverOfItsNameOnce) {
    int others = 0;
    center.addObserver("a", [&] { ++calls; });
    center.addObserver("a", [&] { ++calls; });
    center.addObserver("b", [&] { ++others; });
    center.post("a");
    EXPECT_EQ(calls, 0);
    scheduler.settle();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(others, 0);
}

TEST_F(QueuedNotificationCenterTest, aPostingFromAnotherThreadIsDeliveredOnTheMainThread) {
    bool onMainThread = false;
    center.addObserver("a", [&] { onMainThread = scheduler.mainQueue().isCurrent(); });
    std::thread([&] { center.post("a"); }).join();
    scheduler.settle();
    EXPECT_TRUE(onMainThread);
}

TEST_F(QueuedNotificationCenterTest, aRemovedObserverDoesNotGetWhatWasPostedBefore) {
    const ObserverToken token = center.addObserver("a", [&] { ++calls; });
    center.post("a");
    center.removeObserver(token);
    center.removeObserver(token);
    scheduler.settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(QueuedNotificationCenterTest, anObserverMayRemoveItself) {
    ObserverToken token;
    token = center.addObserver("a", [&] {
        ++calls;
        center.removeObserver(token);
    });
    center.post("a");
    center.post("a");
    scheduler.settle();
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace tavrel
