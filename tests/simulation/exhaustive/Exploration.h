#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/simulation/exhaustive/Choices.h"
#include "tests/simulation/exhaustive/SmallWorld.h"

namespace tavrel::simulation {

/// Lets everything happen in a small world that can happen with a few events: every sequence of
/// events, and for each every order in which the work that is ready at one moment can run.
/// `Invariants` are checked after every step, and at the end of each sequence all faults stop
/// and soon there must be a usable display.
///
/// Depth first by replay: a run is a new world, led by `Choices`, and there is no other way back.
/// First all sequences of no event, then of one, and so on, so the first violation found is a
/// shortest one.
///
/// After each event a run ends when the world's state has been seen before, because all that can
/// follow has been or will be tried from there. That is sound if equal states have equal futures:
///
/// - A world is settled after each event: nothing is ready to run. What can still happen depends
///   on what exists (displays, store, faults, fields of the controller, fields of the checks) and
///   on the work that waits, each piece with the time until it is due and in its order.
/// - Time counts only as a distance: nothing asks for the time of day but to compare it.
/// - A waiting closure is what its code and what it holds make it. For those that hold nothing of
///   weight the code is enough; `WorldState.cpp` lists them and says why. That list is the one
///   thing to look over when the core keeps something new in a closure or in a field.
/// - Any other waiting work, a job asleep in the middle of a slow call above all, is what the
///   state at the event before, that event and the choices since have made it: these are its
///   origin, and it keeps it until it runs again.
/// - The texts shown to the user do not count: nothing reads them, and each is checked when it is
///   written.
/// - How many events may still follow counts too: a state is gone on from whenever it is reached
///   with the fewest events that lead to it, which the shorter sequences before have told.
class Exploration {
public:
    struct Violation {
        std::string what;
        std::vector<Event> events;
        /// The last lines of the log.
        std::vector<std::string> tail;
    };

    /// Ends early, as if nothing were left to try, once `stop` is set. It must outlive this.
    Exploration(const SmallWorld& world, const std::atomic<bool>& stop)
        : world_(world), stop_(stop) {}

    /// Tries all sequences of up to `events` events, or until something does not hold.
    std::optional<Violation> run(std::size_t events);

    /// How many states there are after so many events that no fewer lead to.
    const std::vector<std::size_t>& newStates() const { return newStates_; }
    std::size_t states() const { return states_.size(); }
    std::uint64_t runs() const { return runs_; }

private:
    struct State {
        std::size_t number;
        /// The fewest events that lead to it.
        std::size_t events;
        /// The longest sequences for which it has been gone on from.
        std::size_t triedFor;
    };
    using Origins = std::map<std::uint64_t, std::string>;

    std::optional<Violation> runOnce(std::size_t events, Choices& choices);
    /// Whether to go on from where the world is after `done` of `events` events.
    bool isNew(World& world, const Origins& origins, std::size_t done, std::size_t events);

    SmallWorld world_;
    const std::atomic<bool>& stop_;
    std::unordered_map<std::string, State> states_;
    std::vector<std::size_t> newStates_;
    /// The numbers of the states that the present run has come through.
    std::vector<std::size_t> path_;
    std::uint64_t runs_ = 0;
};

}  // namespace tavrel::simulation
