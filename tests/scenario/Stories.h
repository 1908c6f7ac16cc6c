#pragma once

#include <vector>

#include "tests/scenario/Scenario.h"

namespace tavrel::scenario {

/// How displays are listed and switched. Every stage plays all of these.
const std::vector<Scenario>& switchingStories();

/// How the user always gets a usable screen back. Every stage plays all of these.
const std::vector<Scenario>& recoveryStories();

/// How a crash leaves no display off. Stages with a watchdog play all of these.
const std::vector<Scenario>& crashStories();

/// What a start does about a display that was left off by an application and a watchdog killed
/// together: it lists the display. Stages where nobody but the window server remembers who
/// switched it off play these.
const std::vector<Scenario>& listingStartStories();

/// And where we remember that it was us: it switches the display on.
const std::vector<Scenario>& recoveringStartStories();

}  // namespace tavrel::scenario
