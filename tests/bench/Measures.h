#pragma once

#include <chrono>

#include "tests/bench/Report.h"

namespace tavrel::bench {

/// How much is to be measured.
struct Extent {
    int runs = 15;
    std::chrono::seconds idle{60};
};

// Each adds rows of its own to the report. Each throws std::exception when it cannot go on; what
// it has added until then holds.
void measureStart(const Extent& extent, Report& report);
void measureSwitching(const Extent& extent, Report& report);
void measureRescue(const Extent& extent, Report& report);
void measureIdle(const Extent& extent, Report& report);
void measureGnome(const Extent& extent, Report& report);
void measurePlasma(const Extent& extent, Report& report);
void measureHelper(const Extent& extent, Report& report);
void measureParts(const Extent& extent, Report& report);

}  // namespace tavrel::bench
