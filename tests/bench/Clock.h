#pragma once

#include <chrono>

namespace tavrel::bench {

using Clock = std::chrono::steady_clock;
using Time = Clock::time_point;

inline double milliseconds(Clock::duration duration) {
    return std::chrono::duration<double, std::milli>(duration).count();
}

}  // namespace tavrel::bench
