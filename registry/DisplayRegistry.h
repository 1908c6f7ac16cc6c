#pragma once

#include <string_view>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/UserDefaults.h"
#include "platform/WallClock.h"
#include "registry/StoredDisplay.h"

/// The memory of every display seen in the last 30 days: the way back to a display that
/// was switched off and so vanished from the window server's lists.
///
/// Stateless; all state is one value in the user-defaults store. Thread-safe as far as
/// the store is; two merges at once are not interleaved, the last writer wins.
namespace tavrel::DisplayRegistry {

/// Where the registry is stored. A persisted name: changing it forgets every display.
inline constexpr std::string_view storageKey = "TavrelKnownDisplays";

/// How long a display that is not online is remembered, inclusive.
inline constexpr double retentionSeconds = 2'592'000;

/// The stored records in stored order. An absent, unreadable or malformed value is an
/// empty registry.
std::vector<StoredDisplay> knownDisplays(UserDefaults& userDefaults);

/// Brings the stored records up to date with the displays that are `online` now, forgets
/// those unseen for more than the retention time, stores the rest and returns it ordered
/// by `comesBefore`. A value that cannot be stored is not an error: the result is right
/// all the same. `moment` is asked whether each of `online` is built in.
///
/// REQUIRES: no identifier stands twice in the stored list; otherwise the process stops
/// with a message, because a list like that was not written by this application.
std::vector<StoredDisplay> merge(const std::vector<DisplayID>& online, UserDefaults& userDefaults,
                                 DisplayMoment& moment, WallClock& wallClock);

/// Built-in before external, then by ascending identifier.
bool comesBefore(const StoredDisplay& a, const StoredDisplay& b);

}  // namespace tavrel::DisplayRegistry
