// What holds of background jobs on any Mac, simulated or not.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "tests/platform/macos/BackgroundQueueFixture.h"

namespace tavrel {
namespace {

class BackgroundJobsTest : public testing::Test, protected BackgroundQueueFixture {};

TEST_F(BackgroundJobsTest, RunOnAnotherThread) {
    std::promise<std::thread::id> thread;

    queue->async([&] { thread.set_value(std::this_thread::get_id()); });

    EXPECT_NE(thread.get_future().get(), std::this_thread::get_id());
}

TEST_F(BackgroundJobsTest, RunWhileAnotherBlocks) {
    std::promise<void> hasEnded;
    startJob([&] { hasEnded.set_value(); });

    queue->async([this] { mayEnd.set_value(); });

    // Before the queue's end, which would drop the second job if it has not started yet.
    hasEnded.get_future().wait();
}

TEST_F(BackgroundJobsTest, AreAwaitedAtTheQueuesEndWhenTheyHaveStarted) {
    std::atomic<bool> hasEnded = false;
    startJob([&] { hasEnded = true; });

    std::thread ending([&] {
        queue.reset();
        EXPECT_TRUE(hasEnded);
    });
    mayEnd.set_value();
    ending.join();
}

TEST_F(BackgroundJobsTest, AreDestroyedOnTheirThreadBeforeTheyCountAsEnded) {
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
