#include "platform/macos/MacBackgroundQueue.h"

#include <dispatch/dispatch.h>

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <utility>

namespace tavrel {

/// The system cannot be told to forget a call, so what a call will do waits here, where it
/// can be dropped.
class MacBackgroundQueue::Jobs {
public:
    /// False when there will be no more.
    bool add(Task job) {
        const std::lock_guard lock(mutex_);
        if (!isEnding_) {
            waiting_.push_back(std::move(job));
        }
        return !isEnding_;
    }

    void runNext() {
        std::unique_lock lock(mutex_);
        if (waiting_.empty()) {
            return;
        }
        Task job = std::move(waiting_.front());
        waiting_.pop_front();
        ++running_;
        lock.unlock();
        job();
        job = nullptr;
        lock.lock();
        --running_;
        ended_.notify_all();
    }

    void end() {
        std::deque<Task> dropped;
        std::unique_lock lock(mutex_);
        isEnding_ = true;
        dropped.swap(waiting_);
        ended_.wait(lock, [this] { return running_ == 0; });
    }

private:
    std::mutex mutex_;
    std::condition_variable ended_;
    std::deque<Task> waiting_;
    std::size_t running_ = 0;
    bool isEnding_ = false;
};

MacBackgroundQueue::MacBackgroundQueue() : jobs_(std::make_shared<Jobs>()) {}

MacBackgroundQueue::~MacBackgroundQueue() {
    jobs_->end();
}

void MacBackgroundQueue::async(Task job) {
    if (!jobs_->add(std::move(job))) {
        return;
    }
    auto context = std::make_unique<std::shared_ptr<Jobs>>(jobs_);
    dispatch_async_f(dispatch_get_global_queue(QOS_CLASS_USER_INITIATED, 0), context.release(),
                     &MacBackgroundQueue::runNext);
}

void MacBackgroundQueue::runNext(void* context) {
    const std::unique_ptr<std::shared_ptr<Jobs>> jobs(static_cast<std::shared_ptr<Jobs>*>(context));
    (*jobs)->runNext();
}

}  // namespace tavrel
