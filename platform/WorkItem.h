#pragma once

#include <chrono>
#include <memory>
#include <utility>

#include "platform/MainQueue.h"

namespace tavrel {

/// One piece of main-queue work that can be cancelled until it starts.
/// Main thread only, so a cancellation cannot race with the start.
class WorkItem {
public:
    explicit WorkItem(Task body) : body_(std::move(body)) {}

    void cancel() { cancelled_ = true; }
    bool isCancelled() const { return cancelled_; }

    void perform() {
        if (!cancelled_) {
            body_();
        }
    }

private:
    Task body_;
    bool cancelled_ = false;
};

/// An item as a queue's task.
struct WorkItemTask {
    std::shared_ptr<WorkItem> item;

    void operator()() const { item->perform(); }
};

/// Runs `item` on `queue` after `delay`, unless it has been cancelled by then. The queue
/// shares ownership until then.
inline void asyncAfter(MainQueue& queue, Delay delay, std::shared_ptr<WorkItem> item) {
    queue.asyncAfter(delay, WorkItemTask{std::move(item)});
}

}  // namespace tavrel
