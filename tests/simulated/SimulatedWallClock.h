#pragma once

#include "platform/WallClock.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A time of day that follows simulated time and can be stepped on its own.
class SimulatedWallClock : public WallClock {
public:
    explicit SimulatedWallClock(const SimulatedScheduler& scheduler) : scheduler_(scheduler) {}

    WallTime now() override {
        return start + std::chrono::duration<double>(scheduler_.now()).count() + offset_;
    }

    /// Moves the clock by `seconds`, backwards when negative, and not monotonic time.
    void step(double seconds) { offset_ += seconds; }

private:
    static constexpr WallTime start{800'000'000};
    const SimulatedScheduler& scheduler_;
    double offset_ = 0;
};

}  // namespace tavrel
