#include "platform/posix/ThreadBackgroundQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <set>
#include <thread>

#ifdef __linux__
#include "tests/support/NoMoreThreads.h"
#endif

namespace tavrel {
namespace {

/// Calls `action` when it is destroyed, as a part of what a job holds.
struct OnDestruction {
    explicit OnDestruction(std::function<void()> atTheEnd) : action(std::move(atTheEnd)) {}
    OnDestruction(const OnDestruction&) = delete;
    OnDestruction& operator=(const OnDestruction&) = delete;
    ~OnDestruction() { action(); }

    std::function<void()> action;
};

class ThreadBackgroundQueueTest : public testing::Test {
protected:
    static constexpr std::ptrdiff_t maxThreads = ThreadBackgroundQueue::maxThreads;

    static std::thread::id threadOfNextJob(ThreadBackgroundQueue& queue) {
        std::promise<std::thread::id> ranOn;
        queue.async([&] { ranOn.set_value(std::this_thread::get_id()); });
        return ranOn.get_future().get();
    }

    /// Blocks until every thread there can be runs a job. Each job waits for `release` and
    /// then calls `last`.
    void occupyAllThreads(ThreadBackgroundQueue& queue, const Task& last = {}) {
        for (std::ptrdiff_t i = 0; i < maxThreads; ++i) {
            queue.async([this, last] {
                allRunning.count_down();
                release.wait();
                if (last) {
                    last();
                }
            });
        }
        allRunning.wait();
    }

    std::latch allRunning{maxThreads};
    std::latch release{1};
};

TEST_F(ThreadBackgroundQueueTest, RunsAJobOnAnotherThread) {
    ThreadBackgroundQueue queue;

    EXPECT_NE(threadOfNextJob(queue), std::this_thread::get_id());
}

TEST_F(ThreadBackgroundQueueTest, JobsThatBlockDoNotBlockOthers) {
    ThreadBackgroundQueue queue;

    // Would never return if the jobs did not all run at once.
    occupyAllThreads(queue);

    release.count_down();
}

TEST_F(ThreadBackgroundQueueTest, JobsBeyondTheThreadsRunWhenOneBecomesFree) {
    std::atomic<bool> lastRan = false;
    std::latch last(1);
    ThreadBackgroundQueue queue;
    occupyAllThreads(queue);
    queue.async([&] {
        lastRan = true;
        last.count_down();
    });

    EXPECT_FALSE(lastRan);
    release.count_down();
    last.wait();
}

#ifdef __linux__
TEST_F(ThreadBackgroundQueueTest, AJobForWhichNoThreadCanBeStartedRunsWhenAnotherHasEnded) {
    ThreadBackgroundQueue queue;
    std::latch isRunning(1);
    queue.async([&] {
        isRunning.count_down();
        release.wait();
    });
    isRunning.wait();
    std::promise<void> ran;
    {
        const support::NoMoreThreads noMore;
        EXPECT_NO_THROW(queue.async([&] { ran.set_value(); }));
    }

    release.count_down();
    ran.get_future().wait();
}

TEST_F(ThreadBackgroundQueueTest, JobsForWhichNoThreadCouldBeStartedRunOnceThereIsOne) {
    ThreadBackgroundQueue queue;
    std::promise<void> ran;
    {
        const support::NoMoreThreads noMore;
        EXPECT_NO_THROW(queue.async([&] { ran.set_value(); }));
    }

    threadOfNextJob(queue);

    ran.get_future().wait();
}
#endif

TEST_F(ThreadBackgroundQueueTest, KeepsThreadsForLaterJobs) {
    ThreadBackgroundQueue queue;
    std::set<std::thread::id> threads;
    for (int i = 0; i < 1000; ++i) {
        threads.insert(threadOfNextJob(queue));
    }

    EXPECT_LE(threads.size(), ThreadBackgroundQueue::maxThreads);
}

TEST_F(ThreadBackgroundQueueTest, RunsEveryJobOfManyThreads) {
    constexpr int posters = 4;
    constexpr int jobsEach = 2000;
    std::atomic<int> runs = 0;
    std::latch all(std::ptrdiff_t{posters} * jobsEach);
    ThreadBackgroundQueue queue;
    const auto post = [&] {
        for (int i = 0; i < jobsEach; ++i) {
            queue.async([&] {
                ++runs;
                all.count_down();
            });
        }
    };

    std::vector<std::thread> threads;
    threads.reserve(posters);
    for (int t = 0; t < posters; ++t) {
        threads.emplace_back(post);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    all.wait();

    EXPECT_EQ(runs, posters * jobsEach);
}

TEST_F(ThreadBackgroundQueueTest, AJobMayAddAnother) {
    std::promise<void> second;
    ThreadBackgroundQueue queue;

    queue.async([&] { queue.async([&] { second.set_value(); }); });

    second.get_future().wait();
}

TEST_F(ThreadBackgroundQueueTest, DestroysAJobOnTheThreadThatRanIt) {
    std::promise<std::thread::id> ranOn;
    std::promise<std::thread::id> destroyedOn;
    ThreadBackgroundQueue queue;
    const auto noteThread = [&] { destroyedOn.set_value(std::this_thread::get_id()); };

    queue.async([&ranOn, held = std::make_shared<OnDestruction>(noteThread)] {
        ranOn.set_value(std::this_thread::get_id());
    });

    EXPECT_EQ(ranOn.get_future().get(), destroyedOn.get_future().get());
}

TEST_F(ThreadBackgroundQueueTest, EndWaitsForRunningJobs) {
    std::atomic<bool> ended = false;
    std::latch started(1);
    auto queue = std::make_optional<ThreadBackgroundQueue>();
    queue->async([&] {
        started.count_down();
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ended = true;
    });
    started.wait();

    queue.reset();

    EXPECT_TRUE(ended);
}

TEST_F(ThreadBackgroundQueueTest, EndDropsJobsThatHaveNotStartedAndThoseAddedMeanwhile) {
    std::atomic<bool> droppedRan = false;
    const auto token = std::make_shared<int>();
    auto queue = std::make_optional<ThreadBackgroundQueue>();
    ThreadBackgroundQueue& ending = *queue;
    const auto addJob = [&] { ending.async([&droppedRan, token] { droppedRan = true; }); };
    occupyAllThreads(ending, addJob);
    addJob();
    // The running jobs go on only once the end has begun to drop the waiting ones.
    const auto onDrop = [&] {
        addJob();
        release.count_down();
    };
    ending.async([held = std::make_shared<OnDestruction>(onDrop)] {});

    queue.reset();

    EXPECT_FALSE(droppedRan);
    EXPECT_EQ(token.use_count(), 1) << "a dropped job was not destroyed";
}

}  // namespace
}  // namespace tavrel
