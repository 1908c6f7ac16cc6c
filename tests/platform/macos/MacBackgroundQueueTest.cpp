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
        simulatedMac::resumeWork();
        simulatedMac::joinWork();
    }

    /// Adds a job that runs `last` when it is allowed to end, and waits until it has started.
    void startJob(Task last) {
        queue->async([this, last = std::move(last)] {
            started.set_value();
            mayEnd.get_future().wait();
            last();
        });
        started.get_future().wait();
    }

    std::promise<void> started;
    std::promise<void> mayEnd;
    std::optional<MacBackgroundQueue> queue{std::in_place};
    const std::shared_ptr<int> owned = std::make_shared<int>();
};

TEST_F(MacBackgroundQueueTest, RunsJobsOnTheQueueForWorkThatTheUserInitiated) {
    std::promise<std::thread::id> thread;

    queue->async([&] { thread.set_value(std::this_thread::get_id()); });

    EXPECT_NE(thread.get_future().get(), std::this_thread::get_id());
    EXPECT_THAT(takeCalls(), Each("dispatch_get_global_queue(25, 0)"));
}

TEST_F(MacBackgroundQueueTest, RunsAJobWhileAnotherBlocks) {
    std::promise<void> hasEnded;
    startJob([&] { hasEnded.set_value(); });

    queue->async([this] { mayEnd.set_value(); });

    // Before the queue's end, which would drop the second job if it has not started yet.
    hasEnded.get_future().wait();
}

TEST_F(MacBackgroundQueueTest, WaitsAtItsEndForJobsThatHaveStarted) {
    std::atomic<bool> hasEnded = false;
    startJob([&] { hasEnded = true; });

    std::thread ending([&] {
        queue.reset();
        EXPECT_TRUE(hasEnded);
    });
    mayEnd.set_value();
    ending.join();
}

TEST_F(MacBackgroundQueueTest, DropsAtItsEndJobsThatHaveNotStarted) {
    simulatedMac::holdWork();
    queue->async([owned = owned] { FAIL() << "the queue has gone"; });
    EXPECT_EQ(owned.use_count(), 2);

    queue.reset();
    EXPECT_EQ(owned.use_count(), 1);
    // The system makes its call all the same.
    EXPECT_EQ(simulatedMac::heldWork(), 1U);
}

TEST_F(MacBackgroundQueueTest, DropsJobsThatTheLastOnesAdd) {
    // By the time of the call either the queue is ending, or the new job runs like any other.
    startJob([&same = *queue, owned = owned] { same.async([owned] {}); });

    mayEnd.set_value();
    queue.reset();
    simulatedMac::joinWork();
    EXPECT_EQ(owned.use_count(), 1);
}

TEST_F(MacBackgroundQueueTest, DestroysAJobOnItsThreadBeforeItCountsAsEnded) {
    std::thread::id thread;
    const auto noteThread = [&](void*) { thread = std::this_thread::get_id(); };
    startJob([owned = std::shared_ptr<void>(&thread, noteThread)] {});

    mayEnd.set_value();
    queue.reset();
    EXPECT_NE(thread, std::thread::id());
    EXPECT_NE(thread, std::this_thread::get_id());
}

}  // namespace
}  // namespace tavrel
