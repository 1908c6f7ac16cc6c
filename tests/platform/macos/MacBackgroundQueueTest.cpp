#include "platform/macos/MacBackgroundQueue.h"

#include <atomic>
#include <future>
#include <optional>
#include <thread>

#include "tests/platform/macos/MacFixture.h"
#include "tests/platform/macos/simulated/Dispatch.h"

namespace tavrel {
namespace {

using simulatedMac::takeCalls;
using testing::Each;

class MacBackgroundQueueTest : public MacFixture {
protected:
    ~MacBackgroundQueueTest() override {
        simulatedMac::letWorkGoOn();
        simulatedMac::joinWork();
    }

    std::optional<MacBackgroundQueue> queue{std::in_place};
};

TEST_F(MacBackgroundQueueTest, runsJobsOnTheQueueForWorkThatTheUserInitiated) {
    std::promise<std::thread::id> thread;
    queue->async([&] { thread.set_value(std::this_thread::get_id()); });
    EXPECT_NE(thread.get_future().get(), std::this_thread::get_id());
    EXPECT_THAT(takeCalls(), Each("dispatch_get_global_queue(25, 0)"));
}

TEST_F(MacBackgroundQueueTest, aJobThatBlocksDoesNotHoldUpOthers) {
    std::promise<void> second;
    std::promise<void> firstEnded;
    queue->async([&] {
        second.get_future().wait();
        firstEnded.set_value();
    });
    queue->async([&] { second.set_value(); });
    // The queue's end would drop a second job that has not started yet.
    firstEnded.get_future().wait();
    queue.reset();
}

TEST_F(MacBackgroundQueueTest, itsEndWaitsForJobsThatHaveStarted) {
    std::promise<void> started;
    std::promise<void> letGo;
    std::atomic<bool> hasEnded = false;
    queue->async([&] {
        started.set_value();
        letGo.get_future().wait();
        hasEnded = true;
    });
    started.get_future().wait();
    std::thread ending([&] {
        queue.reset();
        EXPECT_TRUE(hasEnded);
    });
    letGo.set_value();
    ending.join();
}

TEST_F(MacBackgroundQueueTest, itsEndDropsJobsThatHaveNot) {
    simulatedMac::holdWork();
    const auto owned = std::make_shared<int>();
    queue->async([owned] { FAIL() << "the queue has gone"; });
    EXPECT_EQ(owned.use_count(), 2);
    queue.reset();
    EXPECT_EQ(owned.use_count(), 1);
    // The system makes its call all the same.
    EXPECT_EQ(simulatedMac::heldWork(), 1U);
}

TEST_F(MacBackgroundQueueTest, jobsThatTheLastOnesAddAreDropped) {
    std::promise<void> started;
    std::promise<void> letGo;
    const auto owned = std::make_shared<int>();
    queue->async([&, owned, &same = *queue] {
        started.set_value();
        letGo.get_future().wait();
        // By now either the queue is ending, or this job runs as any other does.
        same.async([owned] {});
    });
    started.get_future().wait();
    letGo.set_value();
    queue.reset();
    simulatedMac::joinWork();
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(MacBackgroundQueueTest, aJobIsDestroyedOnItsThreadBeforeItCountsAsEnded) {
    std::promise<void> started;
    std::thread::id thread;
    const auto noteThread = [&](void*) { thread = std::this_thread::get_id(); };
    queue->async(
        [&started, owned = std::shared_ptr<void>(&thread, noteThread)] { started.set_value(); });
    started.get_future().wait();
    queue.reset();
    EXPECT_NE(thread, std::thread::id());
    EXPECT_NE(thread, std::this_thread::get_id());
}

}  // namespace
}  // namespace tavrel
