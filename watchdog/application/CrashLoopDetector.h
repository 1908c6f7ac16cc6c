#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <optional>

namespace tavrel::watchdog {

/// Tells guards that die now and then from guards that cannot live.
class CrashLoopDetector {
public:
    static constexpr std::size_t tooMany = 3;
    static constexpr std::chrono::seconds period{10};

    /// Notes a death at `now`, on a monotonic clock. Returns whether that many have
    /// happened within the period that ends now.
    bool add(std::chrono::nanoseconds now) {
        std::optional<std::chrono::nanoseconds>& slot = latest_.at(next_);
        slot = now;
        next_ = (next_ + 1) % tooMany;
        const auto oldest = latest_.at(next_);
        return oldest && now - *oldest <= period;
    }

private:
    std::array<std::optional<std::chrono::nanoseconds>, tooMany> latest_;
    std::size_t next_ = 0;
};

}  // namespace tavrel::watchdog
