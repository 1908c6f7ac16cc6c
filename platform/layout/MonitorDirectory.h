#pragma once

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/layout/Identity.h"

namespace tavrel {
class UserDefaults;
}

namespace tavrel::layout {

/// The stored form of the monitors known, a JSON array. Persistent: do not change the meaning of
/// a member.
std::string encodeMonitors(const KnownMonitors& monitors);

/// std::nullopt unless the bytes are, whole, what `encodeMonitors` writes.
std::optional<KnownMonitors> decodeMonitors(std::string_view bytes);

/// The key of the persistent store that holds them.
inline constexpr std::string_view knownMonitorsKey = "TavrelKnownMonitors";

/// The monitors that were given a number, in the persistent store: so every process of the
/// application, and each of its runs, calls a monitor the same, wherever it is plugged in and
/// whatever else is.
///
/// What the store says comes first, and is asked whenever a monitor is met or has moved. Of very
/// many monitors, those met first are forgotten. Where the store cannot be written, each process
/// knows only whom it has met itself. Thread-safe.
class MonitorDirectory {
public:
    /// `store` must outlive it.
    explicit MonitorDirectory(UserDefaults& store) : store_(store) {}

    /// Everybody known, after `outputs` have been met. Waits for the store only if there is news.
    KnownMonitors meet(const std::vector<Identity>& outputs);

    /// Everybody known, also to other processes by now. Waits for the store.
    KnownMonitors all();

private:
    UserDefaults& store_;
    std::mutex mutex_;
    KnownMonitors known_;
};

}  // namespace tavrel::layout
