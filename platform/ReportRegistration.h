#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/ReconfigurationReports.h"

namespace tavrel {

/// Who is told of reports: one callback at a time, called on the threads that report, one call
/// at a time. Thread-safe, but not to be destroyed from inside the callback.
class ReportRegistration {
public:
    /// 1004 while a pair is registered.
    ServerStatus add(DisplayReconfigurationCallback callback, void* userInfo);
    /// Blocks until a call on another thread has returned. May be called from inside the
    /// callback. 1001 for a pair that is not registered.
    ServerStatus remove(DisplayReconfigurationCallback callback, void* userInfo);

    void report(DisplayID display, std::uint32_t flags);

private:
    struct Pair {
        DisplayReconfigurationCallback callback;
        void* userInfo;

        friend bool operator==(const Pair&, const Pair&) = default;
    };

    /// Held while the callback runs, so that removing it blocks until the call has returned;
    /// recursive, so that the callback may remove itself.
    std::recursive_mutex mutex_;
    std::optional<Pair> registered_;
};

}  // namespace tavrel
