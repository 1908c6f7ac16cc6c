#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

#include "platform/MainQueue.h"

namespace tavrel {

/// One registration with a notification centre.
struct ObserverToken {
    std::uint64_t value = 0;
};

/// Named broadcasts within the process, without payload. It needs nothing of a system but
/// its main queue, where each posting is a task; on a simulated queue it is a simulated one.
class NotificationCenter {
public:
    /// `mainQueue` must outlive it.
    explicit NotificationCenter(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// From now on runs `block` on the main queue once for each posting of `name`.
    /// From any thread.
    ObserverToken addObserver(std::string_view name, std::function<void()> block);

    /// Ends the registration; postings not yet delivered to it are dropped. Main thread
    /// only, so when it returns the block will not run again.
    void removeObserver(ObserverToken token);

    /// From any thread; returns without waiting for the observers.
    void post(std::string_view name);

private:
    struct Observer {
        std::string name;
        /// Empty once the observer has been removed; main thread only.
        std::function<void()> block;
    };

    MainQueue& mainQueue_;
    std::mutex mutex_;
    std::map<std::uint64_t, std::shared_ptr<Observer>> observers_;
    std::uint64_t nextToken_ = 1;
};

}  // namespace tavrel
