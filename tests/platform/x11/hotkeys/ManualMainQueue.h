#pragma once

#include <deque>
#include <mutex>
#include <utility>

#include "platform/MainQueue.h"
#include "tests/support/WaitUntil.h"

namespace tavrel {

/// A main queue whose tasks run only when a test runs them. Without delays.
class ManualMainQueue : public MainQueue {
public:
    void async(Task task) override {
        const std::lock_guard lock(mutex_);
        tasks_.push_back(std::move(task));
    }

    /// Runs what is waiting, on this thread.
    void runAll() {
        std::deque<Task> tasks;
        {
            const std::lock_guard lock(mutex_);
            tasks.swap(tasks_);
        }
        for (const Task& task : tasks) {
            task();
        }
    }

    /// Runs what comes in until `condition` holds; returns whether it came to hold.
    bool runUntil(const std::function<bool()>& condition) {
        return support::waitUntil([&] {
            runAll();
            return condition();
        });
    }

    void asyncAfter(Delay, Task) override { std::terminate(); }
    std::unique_ptr<RepeatingTimer> repeat(Delay, Task) override { std::terminate(); }
    bool isCurrent() const override { return true; }

private:
    std::mutex mutex_;
    std::deque<Task> tasks_;
};

}  // namespace tavrel
