#include <thread>

#include <gtest/gtest.h>

#include "platform/NotificationCenter.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {
namespace {

class NotificationCenterTest : public testing::Test {
protected:
    SimulatedScheduler scheduler;
    NotificationCenter center{scheduler.mainQueue()};
    int calls = 0;
};

TEST_F(NotificationCenterTest, eachPostingReachesEachObserverOfItsNameOnce) {
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

TEST_F(NotificationCenterTest, aPostingFromAnotherThreadIsDeliveredOnTheMainThread) {
    bool onMainThread = false;
    center.addObserver("a", [&] { onMainThread = scheduler.mainQueue().isCurrent(); });
    std::thread([&] { center.post("a"); }).join();
    scheduler.settle();
    EXPECT_TRUE(onMainThread);
}

TEST_F(NotificationCenterTest, aRemovedObserverDoesNotGetWhatWasPostedBefore) {
    const ObserverToken token = center.addObserver("a", [&] { ++calls; });
    center.post("a");
    center.removeObserver(token);
    center.removeObserver(token);
    scheduler.settle();
    EXPECT_EQ(calls, 0);
}

TEST_F(NotificationCenterTest, anObserverMayRemoveItself) {
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
