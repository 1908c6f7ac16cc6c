#pragma once

#include <chrono>

namespace tavrel {

/// How long a server may stay silent before it is treated as gone. Linux waits up to 10.24 s for
/// a CRTC that is stuck, once for the change before ours and once for ours, and the server serves
/// nobody meanwhile: that long it is slow, not gone. Shorter than the application waits for its
/// watchdog, so that the watchdog can still answer.
inline constexpr std::chrono::milliseconds serverTimeout{25'000};

}  // namespace tavrel
