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

/// One registration with a notification center.
struct ObserverToken {
    std::uint64_t value = 0;
};

/// Named broadcasts within the process, without data. Each delivery is a task of the main
/// queue, so on a simulated queue it happens in simulated time.
class NotificationCenter {
public:
    /// `mainQueue` must outlive it.
    explicit NotificationCenter(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    /// Runs `block` on the main queue once for each later posting of `name`. From any thread.
    ObserverToken addObserver(std::string_view name, std::function<void()> block);

    /// Ends the registration and drops postings not yet delivered to it. Main thread only, so
    /// the block does not run after this has returned.
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
