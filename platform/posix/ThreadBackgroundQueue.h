#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/BackgroundQueue.h"

namespace tavrel {

/// Runs jobs on its own threads. A thread is added whenever a job finds none idle, up to
/// `maxThreads`; jobs wait only while that many others are running, or as many as the system
/// lets us have. Idle threads are kept for later jobs.
///
/// A job must not throw. It is destroyed, with all it holds, on the thread that ran it.
class ThreadBackgroundQueue : public BackgroundQueue {
public:
    static constexpr std::size_t maxThreads = 64;

    ThreadBackgroundQueue() = default;
    /// Drops the jobs that have not started and blocks until the others have ended; jobs
    /// added meanwhile are dropped too. Must not be called from a job.
    ~ThreadBackgroundQueue() override;

    ThreadBackgroundQueue(const ThreadBackgroundQueue&) = delete;
    ThreadBackgroundQueue& operator=(const ThreadBackgroundQueue&) = delete;

    void async(Task job) override;

private:
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> waiting_;
    std::vector<std::thread> threads_;
    std::size_t idleThreads_ = 0;
    bool isEnding_ = false;
};

}  // namespace tavrel
