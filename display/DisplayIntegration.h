#pragma once

#include <vector>

#include "display/DisplayDevice.h"
#include "platform/DisplayQueries.h"
#include "platform/UserDefaults.h"
#include "platform/WallClock.h"
#include "platform/Words.h"

/// The only producer of `DisplayDevice` values.
namespace tavrel::DisplayIntegration {

/// Returns every display that is connected now and every one the registry still remembers,
/// built-in first, then by name, then by identifier. Merges what it found into the registry,
/// so each success rewrites the stored value. All questions go to one `DisplayMoment`.
///
/// Throws `DisplayError::invalidDisplayList` when the server has no list at all, before it
/// touches the registry. From any thread.
std::vector<DisplayDevice> fetchDisplays(DisplayQueries& queries, UserDefaults& userDefaults,
                                         WallClock& wallClock, const Words& words = {});

}  // namespace tavrel::DisplayIntegration
