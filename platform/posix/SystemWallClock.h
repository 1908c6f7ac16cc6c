#pragma once

#include <chrono>

#include "platform/WallClock.h"

namespace tavrel {

/// The system's time of day.
class SystemWallClock : public WallClock {
public:
    WallTime now() override {
        using namespace std::chrono;
        constexpr sys_days referenceDate = 2001y / January / 1;
        return {duration<double>(system_clock::now() - referenceDate).count()};
    }
};

}  // namespace tavrel
