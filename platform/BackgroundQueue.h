#pragma once

#include "platform/MainQueue.h"

namespace tavrel {

/// Runs work the user is waiting for, off the main thread. Jobs run concurrently and in no
/// particular order; one that blocks does not delay the others.
class BackgroundQueue {
public:
    virtual ~BackgroundQueue() = default;

    /// Runs `job` on a background thread. From any thread; returns at once. A job that has
    /// not started when the queue ends is destroyed.
    virtual void async(Task job) = 0;
};

}  // namespace tavrel
