#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>

namespace tavrel::watchdog {

/// Tells a watchdog that crashes now and then from one that cannot run here at all. Apart
/// from the supervisor because it is a rule about time alone, and is tested as one.
class CrashLoopDetector {
public:
    static constexpr std::size_t tooMany = 3;
    static constexpr std::chrono::seconds period{10};

    /// Counts a crash at `now`, on a monotonic clock. Returns whether there were too many
    /// within the period that ends now.
    bool add(std::chrono::nanoseconds now) {
        latest_.at(next_) = now;
        next_ = (next_ + 1) % tooMany;
        const auto oldest = latest_.at(next_);
        return oldest && now - *oldest <= period;
    }

private:
    /// A ring: the oldest is at `next_`.
    std::array<std::optional<std::chrono::nanoseconds>, tooMany> latest_;
    std::size_t next_ = 0;
};

}  // namespace tavrel::watchdog
