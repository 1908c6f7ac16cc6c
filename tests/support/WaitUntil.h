#pragma once

#include <chrono>
#include <functional>

namespace tavrel::support {

/// How long anything on a virtual desktop may take before a test gives up. Far above
/// what a loaded machine needs, so that reaching it means "never".
inline constexpr std::chrono::milliseconds generousBound{30'000};

/// Asks `condition` again and again until it holds or `bound` has passed. Returns
/// whether it came to hold.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds bound = generousBound);

}  // namespace tavrel::support
