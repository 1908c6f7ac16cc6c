#pragma once

#include <chrono>
#include <functional>

namespace tavrel::support {

/// How long anything may take before a test fails. Far more than a loaded machine needs, so
/// that reaching it means "never".
inline constexpr std::chrono::milliseconds defaultTimeout{30'000};

/// Blocks until `condition` holds, asking it every few milliseconds; less often, but several
/// times a second, when it takes its time. Returns false when it does not before the timeout.
bool waitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds timeout = defaultTimeout);

}  // namespace tavrel::support
