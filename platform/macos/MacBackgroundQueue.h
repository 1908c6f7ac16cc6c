#pragma once

#include <memory>

#include "platform/BackgroundQueue.h"

namespace tavrel {

/// The system's global queue for work that the user is waiting for.
///
/// A job must not throw. It is destroyed, with all it holds, on the thread that ran it.
class MacBackgroundQueue final : public BackgroundQueue {
public:
    MacBackgroundQueue();
    /// Waits for the jobs that have started and drops the others, also those that the
    /// last ones add. Must not be called from a job.
    ~MacBackgroundQueue() override;

    MacBackgroundQueue(const MacBackgroundQueue&) = delete;
    MacBackgroundQueue& operator=(const MacBackgroundQueue&) = delete;

    void async(Task job) override;

private:
    class Jobs;

    static void runNext(void* context);

    /// Shared with each call that the system has still to make.
    std::shared_ptr<Jobs> jobs_;
};

}  // namespace tavrel
