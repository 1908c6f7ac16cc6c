#pragma once

#include <vector>

#include "display/DisplayDevice.h"
#include "platform/DisplayQueries.h"
#include "platform/UserDefaults.h"
#include "platform/WallClock.h"

/// The only producer of `DisplayDevice` values.
namespace tavrel::DisplayIntegration {

/// Every display that is connected now, and every one the registry still remembers,
/// built-in first, then by name; equal names by identifier. Merges what it found into
/// the registry, so each success rewrites the stored value. Asks one moment.
///
/// Throws `DisplayError::invalidDisplayList` when the server gives no list at all; the
/// registry has not been touched then. From any thread.
std::vector<DisplayDevice> fetchDisplays(DisplayQueries& queries, UserDefaults& userDefaults,
                                         WallClock& wallClock);

}  // namespace tavrel::DisplayIntegration
