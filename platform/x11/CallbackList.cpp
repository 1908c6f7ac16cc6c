#include "platform/x11/CallbackList.h"

#include <algorithm>

namespace tavrel::x11 {

CallbackList::Entries::iterator CallbackList::find(DisplayReconfigurationCallback callback,
                                                   void* userInfo) {
    return std::find_if(entries_.begin(), entries_.end(), [=](const auto& entry) {
        return entry->callback == callback && entry->userInfo == userInfo;
    });
}

void CallbackList::add(DisplayReconfigurationCallback callback, void* userInfo) {
    const std::lock_guard lock(mutex_);
    if (find(callback, userInfo) == entries_.end()) {
        entries_.push_back(std::make_shared<Entry>(Entry{callback, userInfo}));
    }
}

bool CallbackList::remove(DisplayReconfigurationCallback callback, void* userInfo) {
    std::unique_lock lock(mutex_);
    const auto found = find(callback, userInfo);
    if (found == entries_.end()) {
        return false;
    }
    const std::shared_ptr<Entry> entry = *found;
    entry->isRemoved = true;
    entries_.erase(found);
    callEnded_.wait(lock, [&] {
        return std::all_of(entry->runningOn.begin(), entry->runningOn.end(),
                           [](std::thread::id id) { return id == std::this_thread::get_id(); });
    });
    return true;
}

void CallbackList::call(DisplayID display, std::uint32_t flags) {
    const std::thread::id here = std::this_thread::get_id();
    std::unique_lock lock(mutex_);
    for (const auto& entry : Entries(entries_)) {
        if (entry->isRemoved) {
            continue;
        }
        entry->runningOn.push_back(here);
        lock.unlock();
        entry->callback(display, flags, entry->userInfo);
        lock.lock();
        entry->runningOn.erase(std::find(entry->runningOn.begin(), entry->runningOn.end(), here));
        callEnded_.notify_all();
    }
}

}  // namespace tavrel::x11
