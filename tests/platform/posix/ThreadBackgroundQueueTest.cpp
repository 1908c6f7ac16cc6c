#include "platform/posix/ThreadBackgroundQueue.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <set>
#include <thread>

namespace tavrel {
namespace {

constexpr std::ptrdiff_t maxThreads = ThreadBackgroundQueue::maxThreads;

TEST(ThreadBackgroundQueue, RunsAJobOnAnotherThread) {
    ThreadBackgroundQueue queue;
    std::promise<std::thread::id> ranOn;
    queue.async([&] { ranOn.set_value(std::this_thread::get_id()); });

    EXPECT_NE(ranOn.get_future().get(), std::this_thread::get_id());
}

TEST(ThreadBackgroundQueue, JobsThatBlockDoNotHoldUpOthers) {
    std::latch release(1);
    std::latch allRunning(maxThreads);
    ThreadBackgroundQueue queue;
    for (std::ptrdiff_t i = 0; i < maxThreads; ++i) {
        queue.async([&] {
            allRunning.count_down();
            release.wait();
        });
    }

    // Would wait for ever if they did not all run at once.
    allRunning.wait();
    release.count_down();
}

TEST(ThreadBackgroundQueue, JobsBeyondTheThreadsRunWhenOneBecomesFree) {
    std::latch release(1);
    std::latch allRunning(maxThreads);
    std::latch last(1);
    ThreadBackgroundQueue queue;
    for (std::ptrdiff_t i = 0; i < maxThreads; ++i) {
        queue.async([&] {
            allRunning.count_down();
            release.wait();
        });
    }
    allRunning.wait();
    std::atomic<bool> lastRan = false;
    queue.async([&] {
        lastRan = true;
        last.count_down();
    });

    EXPECT_FALSE(lastRan);
    release.count_down();
    last.wait();
}

TEST(ThreadBackgroundQueue, KeepsThreadsForLaterJobs) {
    ThreadBackgroundQueue queue;
    std::set<std::thread::id> threads;
    constexpr std::size_t jobs = 1000;
    for (std::size_t i = 0; i < jobs; ++i) {
        std::promise<std::thread::id> ranOn;
        queue.async([&] { ranOn.set_value(std::this_thread::get_id()); });
        threads.insert(ranOn.get_future().get());
    }

    EXPECT_LE(threads.size(), ThreadBackgroundQueue::maxThreads);
}

TEST(ThreadBackgroundQueue, RunsEveryJobOfManyThreads) {
    constexpr int posters = 4;
    constexpr int jobsEach = 2000;
    std::atomic<int> runs = 0;
    std::latch all(std::ptrdiff_t{posters} * jobsEach);
    ThreadBackgroundQueue queue;
    std::vector<std::thread> threads;
    threads.reserve(posters);
    for (int t = 0; t < posters; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < jobsEach; ++i) {
                queue.async([&] {
                    ++runs;
                    all.count_down();
                });
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    all.wait();

    EXPECT_EQ(runs, posters * jobsEach);
}

TEST(ThreadBackgroundQueue, AJobMayAddAnother) {
    ThreadBackgroundQueue queue;
    std::promise<void> second;
    queue.async([&] { queue.async([&] { second.set_value(); }); });

    second.get_future().wait();
}

TEST(ThreadBackgroundQueue, DestroysAJobOnTheThreadThatRanIt) {
    struct Held {
        std::promise<std::thread::id>& destroyedOn;
        explicit Held(std::promise<std::thread::id>& promise) : destroyedOn(promise) {}
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held() { destroyedOn.set_value(std::this_thread::get_id()); }
    };
    std::promise<std::thread::id> ranOn;
    std::promise<std::thread::id> destroyedOn;
    ThreadBackgroundQueue queue;
    queue.async([&ranOn, held = std::make_shared<Held>(destroyedOn)] {
        ranOn.set_value(std::this_thread::get_id());
    });

    EXPECT_EQ(ranOn.get_future().get(), destroyedOn.get_future().get());
}

TEST(ThreadBackgroundQueue, EndWaitsForRunningJobs) {
    std::atomic<bool> ended = false;
    std::latch started(1);
    {
        ThreadBackgroundQueue queue;
        queue.async([&] {
            started.count_down();
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            ended = true;
        });
        started.wait();
    }
    EXPECT_TRUE(ended);
}

TEST(ThreadBackgroundQueue, EndDropsJobsThatHaveNotStartedAndThoseAddedMeanwhile) {
    std::latch release(1);
    std::latch allRunning(maxThreads);
    std::atomic<bool> droppedRan = false;
    const auto token = std::make_shared<int>();
    const auto makeJob = [&] { return [&droppedRan, token] { droppedRan = true; }; };
    auto queue = std::make_optional<ThreadBackgroundQueue>();
    ThreadBackgroundQueue& ending = *queue;
    for (std::ptrdiff_t i = 0; i < maxThreads; ++i) {
        ending.async([&] {
            allRunning.count_down();
            release.wait();
            ending.async(makeJob());
        });
    }
    allRunning.wait();

    // The running jobs go on only once the end has begun to drop the waiting ones.
    const Task onDrop = [&] {
        ending.async(makeJob());
        release.count_down();
    };
    struct RunsWhenDropped {
        const Task& task;
        explicit RunsWhenDropped(const Task& atTheEnd) : task(atTheEnd) {}
        RunsWhenDropped(const RunsWhenDropped&) = delete;
        RunsWhenDropped& operator=(const RunsWhenDropped&) = delete;
        ~RunsWhenDropped() { task(); }
    };
    ending.async(makeJob());
    ending.async([held = std::make_shared<RunsWhenDropped>(onDrop)] {});
    queue.reset();

    EXPECT_FALSE(droppedRan);
    EXPECT_EQ(token.use_count(), 1) << "a dropped job was not destroyed";
}

}  // namespace
}  // namespace tavrel
