#pragma once

#include "platform/MainQueue.h"

namespace tavrel {

/// Work the user is waiting for, off the main thread. Jobs run concurrently and in no
/// promised order; one that blocks does not hold up the others.
class BackgroundQueue {
public:
    virtual ~BackgroundQueue() = default;

    /// From any thread; returns at once. A job that never starts because the queue ends
    /// first is destroyed.
    virtual void async(Task job) = 0;
};

}  // namespace tavrel
