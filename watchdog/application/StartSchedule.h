#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <optional>

namespace tavrel::watchdog {

/// Tells a watchdog that crashes now and then from one that cannot run here at all.
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

/// When the next watchdog is to be started. Times are on a monotonic clock with any zero.
///
/// After a crash at once, unless watchdogs seem unable to run here; then not for some minutes.
/// After a start that the system refused (for want of memory or of processes) a second later,
/// and after each further refusal twice as long as before, up to a minute.
class StartSchedule {
public:
    static constexpr std::chrono::seconds firstPause{1};
    static constexpr std::chrono::seconds longestPause{60};
    static constexpr std::chrono::minutes pauseAfterCrashLoop{5};

    bool isDue(std::chrono::nanoseconds now) const { return now >= next_; }

    void noteStart() { pause_ = firstPause; }
    void noteRefusal(std::chrono::nanoseconds now) {
        next_ = now + pause_;
        pause_ = std::min(2 * pause_, longestPause);
    }
    void noteCrash(std::chrono::nanoseconds now) {
        next_ = crashes_.add(now) ? now + pauseAfterCrashLoop : now;
    }

private:
    CrashLoopDetector crashes_;
    /// Long before any time that is asked about.
    std::chrono::nanoseconds next_ = std::chrono::nanoseconds::min();
    std::chrono::seconds pause_ = firstPause;
};

}  // namespace tavrel::watchdog
