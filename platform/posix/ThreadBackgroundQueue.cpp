#include "platform/posix/ThreadBackgroundQueue.h"

#include <system_error>
#include <utility>

namespace tavrel {

ThreadBackgroundQueue::~ThreadBackgroundQueue() {
    std::deque<Task> dropped;
    {
        const std::lock_guard guard(mutex_);
        isEnding_ = true;
        dropped.swap(waiting_);
    }
    // Not under the lock: destroying what a dropped job holds may add another job.
    dropped.clear();
    changed_.notify_all();
    for (std::thread& thread : threads_) {
        thread.join();
    }
}

void ThreadBackgroundQueue::async(Task job) {
    const std::lock_guard guard(mutex_);
    if (isEnding_) {
        return;
    }
    waiting_.push_back(std::move(job));
    if (waiting_.size() > idleThreads_ && threads_.size() < maxThreads) {
        try {
            threads_.emplace_back([this] { work(); });
            return;
        } catch (const std::system_error&) {
            // The next of the others that is idle runs it, or one that a later job finds room for.
        }
    }
    changed_.notify_one();
}

void ThreadBackgroundQueue::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        ++idleThreads_;
        changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
        --idleThreads_;
        if (isEnding_) {
            return;
        }
        Task job = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
    }
}

}  // namespace tavrel
