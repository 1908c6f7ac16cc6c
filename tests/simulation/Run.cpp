#include "tests/simulation/Run.h"

#include <algorithm>

#include "tests/simulation/World.h"

namespace tavrel::simulation {

Outcome run(std::uint64_t seed, const std::vector<Event>& events) {
    World world(seed);
    Outcome outcome;
    for (const Event& event : events) {
        if (world.violation().has_value()) {
            break;
        }
        world.apply(event);
        ++outcome.events;
    }
    outcome.violation = world.violation();
    outcome.hash = world.log().hash();
    outcome.hours = std::chrono::duration<double, std::ratio<3600>>(world.now()).count();
    outcome.steps = world.steps();
    outcome.tail.assign(world.log().tail().begin(), world.log().tail().end());
    return outcome;
}

std::vector<Event> shrink(std::uint64_t seed, std::vector<Event> events,
                          const std::string& violation, int attempts) {
    const auto stillFails = [&](const std::vector<Event>& candidate) {
        --attempts;
        return run(seed, candidate).violation == violation;
    };
    // Leaves out smaller and smaller pieces, as long as the violation stays the same.
    for (std::size_t piece = events.size() / 2; piece >= 1; piece /= 2) {
        for (std::size_t start = 0; start < events.size() && attempts > 0;) {
            std::vector<Event> candidate = events;
            const auto first = candidate.begin() + static_cast<std::ptrdiff_t>(start);
            const auto last = candidate.begin() +
                              static_cast<std::ptrdiff_t>(std::min(start + piece, events.size()));
            candidate.erase(first, last);
            if (stillFails(candidate)) {
                events = std::move(candidate);
            } else {
                start += piece;
            }
        }
    }
    return events;
}

}  // namespace tavrel::simulation
