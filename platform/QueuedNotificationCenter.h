#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/MainQueue.h"
#include "platform/NotificationCenter.h"

namespace tavrel {

/// A notification centre that needs nothing of a system but its main queue: each posting
/// is a task there. On a simulated main queue it is a simulated centre.
class QueuedNotificationCenter : public NotificationCenter {
public:
    /// `mainQueue` must outlive it.
    explicit QueuedNotificationCenter(MainQueue& mainQueue) : mainQueue_(mainQueue) {}

    ObserverToken addObserver(std::string_view name, std::function<void()> block) override;
    void removeObserver(ObserverToken token) override;
    void post(std::string_view name) override;

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
