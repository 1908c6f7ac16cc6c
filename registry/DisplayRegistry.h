#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/UserDefaults.h"
#include "platform/WallClock.h"
#include "registry/StoredDisplay.h"

/// Remembers every display seen in the last 30 days, so that one that was switched off, and
/// is therefore missing from the window server's lists, can be switched on again.
///
/// Stateless; all state is one value in the user-defaults store. Thread-safe if the store
/// is; of two merges at once, the last one to write wins.
namespace tavrel::DisplayRegistry {

/// The key under which the registry is stored. Changing it forgets every display.
inline constexpr std::string_view storageKey = "TavrelKnownDisplays";

/// How long a display that is not online is remembered, inclusive.
inline constexpr double retentionSeconds = 2'592'000;

/// The stored records, in their order. A value that is absent, unreadable or malformed counts as
/// an empty registry. Whoever asks each second has `KnownDisplays` read them.
std::vector<StoredDisplay> knownDisplays(UserDefaults& userDefaults);

/// Brings the stored records up to date with the displays that are `online` now, forgets those
/// that have not been seen for longer than the retention time, stores the rest and returns it
/// ordered by `comesBefore`. A failure to store is ignored and does not change the result. `moment`
/// is asked whether each of `online` is built in.
///
/// REQUIRES: no identifier is in the stored list twice; otherwise the process stops with a
/// message, because this application does not write such a list.
std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online, UserDefaults& userDefaults,
                                 DisplayMoment& moment, WallClock& wallClock);

/// Built-in before external, then by ascending identifier.
bool comesBefore(const StoredDisplay& a, const StoredDisplay& b);

}  // namespace tavrel::DisplayRegistry

namespace tavrel {

/// The registry for somebody who reads it again and again: asks the store each time, but decodes
/// the value only when it has changed. For one thread.
class KnownDisplays {
public:
    /// `userDefaults` must outlive it.
    explicit KnownDisplays(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

    /// As `DisplayRegistry::knownDisplays`. What it returns is valid until the next call.
    const std::vector<StoredDisplay>& read();

private:
    UserDefaults& userDefaults_;
    /// The stored value that `records_` was decoded from.
    std::optional<std::string> text_;
    std::vector<StoredDisplay> records_;
};

}  // namespace tavrel
