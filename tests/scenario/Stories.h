#pragma once

#include <iosfwd>
#include <vector>

#include "tests/scenario/Scenario.h"

namespace tavrel::scenario {

/// The main job, told as stories. Every stage plays all of them.
const std::vector<Scenario>& switchingStories();

/// How no one is left without a screen, told as stories. Every stage plays all of them.
const std::vector<Scenario>& recoveryStories();

/// How a crash leaves no display off, told as stories. Stages on which somebody survives the
/// application play all of them.
const std::vector<Scenario>& crashStories();

}  // namespace tavrel::scenario
