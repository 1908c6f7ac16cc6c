#pragma once

#include <algorithm>
#include <chrono>

#include "watchdog/application/CrashLoopDetector.h"

namespace tavrel::watchdog {

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
