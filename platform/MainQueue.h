#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace tavrel {

using Task = std::function<void()>;
/// Delays run on a monotonic clock.
using Delay = std::chrono::nanoseconds;

/// A tick that repeats until invalidated. Destroying it invalidates it. Main thread only.
class RepeatingTimer {
public:
    virtual ~RepeatingTimer() = default;

    /// No tick starts after this returns.
    virtual void invalidate() = 0;
};

/// The main thread's queue of work. Tasks run there one at a time, in the order they
/// become due. A task that has not run when the queue ends is destroyed.
class MainQueue {
public:
    virtual ~MainQueue() = default;

    /// Runs `task` on the main thread, when called there not before this call has returned.
    /// From any thread.
    virtual void async(Task task) = 0;

    /// The same, not before `delay` has passed. From any thread.
    virtual void asyncAfter(Delay delay, Task task) = 0;

    /// Ticks every `interval`, the first time about one interval from now, also while a menu
    /// is open or a window is being dragged. Where the interval is a number of whole seconds, the
    /// first tick may come half a second sooner or later, so that all such timers tick together
    /// and wake the machine once. Main thread only.
    virtual std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) = 0;

    /// Whether the caller is on the main thread.
    virtual bool isCurrent() const = 0;
};

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
