#pragma once

#include <future>
#include <memory>
#include <optional>
#include <utility>

#include "platform/macos/MacBackgroundQueue.h"

namespace tavrel {

/// A background queue and one job that ends when it is told to. For tests on any Mac,
/// simulated or not.
class BackgroundQueueFixture {
protected:
    /// Adds a job that runs `last` when it is allowed to end, and waits until it has started.
    void startJob(Task last) {
        queue->async([this, last = std::move(last)] {
            started.set_value();
            mayEnd.get_future().wait();
            last();
        });
        started.get_future().wait();
    }

    std::promise<void> started;
    std::promise<void> mayEnd;
    std::optional<MacBackgroundQueue> queue{std::in_place};
};

}  // namespace tavrel
