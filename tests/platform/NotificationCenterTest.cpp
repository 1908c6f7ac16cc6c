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

TEST_F(NotificationCenterTest, APostingReachesEachObserverOfItsNameOnce) {
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

TEST_F(NotificationCenterTest, APostingFromAnotherThreadIsDeliveredOnTheMainThread) {
    bool isOnMainThread = false;
    center.addObserver("a", [&] { isOnMainThread = scheduler.mainQueue().isCurrent(); });

    std::thread([&] { center.post("a"); }).join();
    scheduler.settle();

    EXPECT_TRUE(isOnMainThread);
}

TEST_F(NotificationCenterTest, ARemovedObserverDoesNotGetWhatWasPostedBefore) {
    const ObserverToken token = center.addObserver("a", [&] { ++calls; });
    center.post("a");

    center.removeObserver(token);
    center.removeObserver(token);
    scheduler.settle();

    EXPECT_EQ(calls, 0);
}

TEST_F(NotificationCenterTest, AnObserverMayRemoveItself) {
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
