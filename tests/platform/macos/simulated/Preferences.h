#pragma once

#include <string>
#include <string_view>

#include "tests/platform/macos/simulated/SharedState.h"

/// The preferences of a simulated Mac, as another program writes and reads them.
namespace tavrel::simulatedMac {

/// Puts a value of any kind under `key`.
void plantPreference(SharedState& mac, std::string_view key, Preference::Kind kind,
                     std::string_view bytes);

/// The bytes of the data under `key`; empty when there is none.
std::string preferenceData(SharedState& mac, std::string_view key);

}  // namespace tavrel::simulatedMac
