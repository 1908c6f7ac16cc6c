#pragma once

#include "platform/WallClock.h"

namespace tavrel {

/// A time of day that only changes when a test sets it.
struct SettableClock : WallClock {
    explicit SettableClock(double secondsSinceReferenceDate = 800'000'000)
        : time{secondsSinceReferenceDate} {}

    WallTime now() override { return time; }

    WallTime time;
};

}  // namespace tavrel
