#pragma once

#include <functional>

namespace tavrel {

/// The lid of a laptop. Thread-safe.
class Lid {
public:
    virtual ~Lid() = default;

    /// Whether the system says that it is closed. False where there is no lid, and while nobody
    /// can say. Never blocks.
    virtual bool isClosed() const = 0;

    /// Calls `changed` after each later change of `isClosed`, on any thread, one call at a time;
    /// null to end that. There is one observer: it replaces the former one. Blocks until a call
    /// of that on another thread has returned. May be called from within such a call.
    virtual void observe(std::function<void()> changed) = 0;
};

}  // namespace tavrel
