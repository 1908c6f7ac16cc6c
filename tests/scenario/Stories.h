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

}  // namespace tavrel::scenario
