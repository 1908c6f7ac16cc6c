#pragma once

#include <array>
#include <string>
#include <vector>

#include "tests/simulation/Event.h"
#include "tests/simulation/World.h"

namespace tavrel::simulation {

/// A desk with a laptop's panel and one monitor.
struct SmallWorld {
    std::string name;
    Setting setting;
    /// Whether other faults than its setting may begin and end.
    bool hasFaults;
    /// Whether only half as many events are tried, rounded up: what sleeps in the middle of a
    /// slow call makes many more states.
    bool onlyHalf;
};

/// For each kind of window server one with faults, and one in which every switch is slow.
const std::array<SmallWorld, 4>& smallWorlds();

/// Everything that may happen next: time passes; the user flips a switch or wakes all; another
/// program switches a display off; the monitor's cable is pulled or put back; the server reports
/// something that is no change; a fault begins or ends; the application quits and is started
/// again. What would change nothing is left out. Always the same for one state.
std::vector<Event> possibleEvents(const SmallWorld& small, const World& world);

}  // namespace tavrel::simulation
