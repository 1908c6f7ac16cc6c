#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace tavrel {

/// A clock that only goes forward, with any zero. To be read by any thread.
using MonotonicClock = std::function<std::chrono::nanoseconds()>;

inline std::chrono::nanoseconds steadyTime() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

/// Blocks until `condition`, which is read with the lock held, but not beyond `deadline` on that
/// clock. Returns whether it holds. While the clock stands still, only the condition ends it.
template <typename Condition>
bool waitUntil(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
               const MonotonicClock& now, std::chrono::nanoseconds deadline, Condition condition) {
    while (!condition()) {
        const std::chrono::nanoseconds left = deadline - now();
        if (left <= std::chrono::nanoseconds::zero()) {
            return false;
        }
        changed.wait_for(lock, left);
    }
    return true;
}

}  // namespace tavrel
