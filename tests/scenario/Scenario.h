#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/scenario/Stage.h"

namespace tavrel::scenario {

/// One step of a story: an action, or an expectation that is waited for.
struct Step {
    /// The step in words, for failures.
    std::string told;
    /// Does it; null for an expectation.
    std::function<void(Stage&)> act;
    /// Whether the expectation is met now; null for an action.
    std::function<bool(Stage&)> holds;
};

/// A story that can be played on any stage; its name tells it in one line.
struct Scenario {
    /// Letters and digits only, because it becomes part of a test's name.
    std::string name;
    /// How many displays there are, all external and on.
    std::size_t displays = 3;
    std::vector<Step> steps;
};

/// Plays the steps in order and waits for each expectation. Returns std::nullopt when all were
/// met, else what was expected and what was seen instead.
std::optional<std::string> play(const Scenario& scenario, Stage& stage);

}  // namespace tavrel::scenario
