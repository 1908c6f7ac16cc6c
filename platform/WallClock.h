#pragma once

#include <chrono>
#include <compare>
#include <limits>

namespace tavrel {

/// A point of wall-clock time: seconds since 2001-01-01 00:00:00 UTC, fractions kept.
/// The format of the known-display registry depends on this zero.
struct WallTime {
    double sinceReferenceDate = 0;

    /// Earlier than any time a clock can show.
    static constexpr WallTime distantPast() { return {-std::numeric_limits<double>::infinity()}; }

    // clang-tidy 14 takes the comparison with 0 that this implies for a pointer's.
    // NOLINTNEXTLINE(modernize-use-nullptr)
    friend constexpr auto operator<=>(WallTime, WallTime) = default;
    friend constexpr WallTime operator+(WallTime time, double seconds) {
        return {time.sinceReferenceDate + seconds};
    }
    /// Seconds from `earlier` to `later`; negative when the order is the other way.
    friend constexpr double operator-(WallTime later, WallTime earlier) {
        return later.sinceReferenceDate - earlier.sinceReferenceDate;
    }
};

/// The time of day. The user or the network may set it forwards or backwards at any moment,
/// so delays are never measured with it. Thread-safe.
class WallClock {
public:
    virtual ~WallClock() = default;
    virtual WallTime now() = 0;
};

/// The system's.
class SystemWallClock final : public WallClock {
public:
    WallTime now() override {
        using namespace std::chrono;
        constexpr sys_days referenceDate = 2001y / January / 1;
        return {duration<double>(system_clock::now() - referenceDate).count()};
    }
};

}  // namespace tavrel
