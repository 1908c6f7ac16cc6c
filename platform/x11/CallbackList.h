#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/ReconfigurationReports.h"

namespace tavrel::x11 {

/// The callbacks that are to hear of changes. Thread-safe, also for calls made from inside
/// a callback.
class CallbackList {
public:
    /// Adding what is there already changes nothing.
    void add(DisplayReconfigurationCallback callback, void* userInfo);

    /// Returns when no call of it is running any more, except those this is called from.
    /// False when there is no such callback.
    bool remove(DisplayReconfigurationCallback callback, void* userInfo);

    /// Calls all of them on this thread.
    void call(DisplayID display, std::uint32_t flags);

private:
    struct Entry {
        DisplayReconfigurationCallback callback;
        void* userInfo;
        bool isRemoved = false;
        /// The threads on which it is running; one that runs it twice is in here twice.
        std::vector<std::thread::id> runningOn = {};
    };
    using Entries = std::vector<std::shared_ptr<Entry>>;

    Entries::iterator find(DisplayReconfigurationCallback callback, void* userInfo);

    std::mutex mutex_;
    std::condition_variable callEnded_;
    Entries entries_;
};

}  // namespace tavrel::x11
