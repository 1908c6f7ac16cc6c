#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/simulation/Event.h"

namespace tavrel::simulation {

/// The outcome of one run of a world.
struct Outcome {
    /// The first thing that did not hold; std::nullopt when everything did.
    std::optional<std::string> violation;
    /// The hash of everything that happened.
    std::uint64_t hash = 0;
    double hours = 0;
    std::uint64_t steps = 0;
    /// How many of the events were carried out.
    std::size_t events = 0;
    /// The last lines of the log.
    std::vector<std::string> tail;
};

/// Runs a world with this seed through these events, on the calling thread.
Outcome run(std::uint64_t seed, const std::vector<Event>& events);

/// A shorter list that still leads to the same violation, found in at most `attempts` runs.
std::vector<Event> shrink(std::uint64_t seed, std::vector<Event> events,
                          const std::string& violation, int attempts = 400);

}  // namespace tavrel::simulation
