#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace tavrel {

/// One registration with a notification centre.
struct ObserverToken {
    std::uint64_t value = 0;
};

/// Named broadcasts within the process, without payload.
class NotificationCenter {
public:
    virtual ~NotificationCenter() = default;

    /// From now on runs `block` on the main queue once for each posting of `name`.
    /// From any thread.
    virtual ObserverToken addObserver(std::string_view name, std::function<void()> block) = 0;

    /// Ends the registration; postings not yet delivered to it are dropped. Main thread
    /// only, so when it returns the block will not run again.
    virtual void removeObserver(ObserverToken token) = 0;

    /// From any thread; returns without waiting for the observers.
    virtual void post(std::string_view name) = 0;
};

}  // namespace tavrel
