#pragma once

#include <cstddef>

namespace tavrel::simulation {

/// Explores every small world up to so many events, all at once, and prints how many states
/// each has, or the shortest list of events that leads to a violation. Returns whether something
/// was violated.
bool exploreAndReport(std::size_t events);

}  // namespace tavrel::simulation
