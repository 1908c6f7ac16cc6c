#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/scenario/Stage.h"

namespace tavrel::scenario {

/// One sentence of a story: something that is done, or something that comes to hold.
struct Step {
    std::string told;
    /// Does it; null for an expectation.
    std::function<void(Stage&)> act;
    /// Whether what is seen now is what is expected; null for an act.
    std::function<bool(Stage&)> holds;
};

/// A story that can be played on any stage: its name tells it in one line.
struct Scenario {
    /// Letters and digits only, so that test runners can show it.
    std::string name;
    /// How many displays there are, all external and on.
    std::size_t displays = 3;
    std::vector<Step> steps;
};

/// Plays the steps in order, awaiting each expectation. Returns nothing when all came to
/// hold, else what was expected and what was seen instead.
std::optional<std::string> play(const Scenario& scenario, Stage& stage);

}  // namespace tavrel::scenario
