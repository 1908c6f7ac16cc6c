#include "tests/simulation/exhaustive/Exploration.h"

#include "tests/simulation/World.h"

namespace tavrel::simulation {

namespace {

const Event faultsStop{Event::Kind::converge, std::chrono::milliseconds::zero(), 0, 0};

/// Gives the work that waits since the last state, and is not described by its code, its origin.
void addOrigins(const World& world, std::map<std::uint64_t, std::string>& origins,
                const std::string& since) {
    std::map<std::uint64_t, std::string> waiting;
    for (const std::uint64_t number : world.workToDescribe()) {
        const auto found = origins.find(number);
        waiting.emplace(number, found != origins.end()
                                    ? found->second
                                    : since + "#" + std::to_string(waiting.size()));
    }
    origins = std::move(waiting);
}

}  // namespace

std::optional<Exploration::Violation> Exploration::run(std::size_t events) {
    for (std::size_t length = 0; length <= events && !stop_; ++length) {
        newStates_.push_back(0);
        Choices choices;
        do {
            if (auto violation = runOnce(length, choices)) {
                return violation;
            }
        } while (!stop_ && choices.next());
    }
    return std::nullopt;
}

std::optional<Exploration::Violation> Exploration::runOnce(std::size_t events, Choices& choices) {
    ++runs_;
    World world(world_.setting, choices);
    std::vector<Event> happened;
    Origins origins;
    std::size_t lastChoice = 0;
    const auto violation = [&]() -> std::optional<Violation> {
        if (!world.violation().has_value()) {
            return std::nullopt;
        }
        return Violation{
            *world.violation(), happened, {world.log().tail().begin(), world.log().tail().end()}};
    };

    while (!world.violation().has_value()) {
        std::string since = happened.empty() ? "" : std::to_string(path_[happened.size() - 1]);
        for (; lastChoice < choices.position(); ++lastChoice) {
            since += "/" + std::to_string(choices.taken(lastChoice));
        }
        addOrigins(world, origins, since);
        if (!choices.isRepeating() && !isNew(world, origins, happened.size(), events)) {
            return std::nullopt;
        }
        if (happened.size() == events) {
            happened.push_back(faultsStop);
            world.apply(faultsStop);
            return violation();
        }
        const std::vector<Event> possible = possibleEvents(world_, world);
        happened.push_back(possible[choices.choose(possible.size())]);
        world.apply(happened.back());
    }
    return violation();
}

bool Exploration::isNew(World& world, const Origins& origins, std::size_t done,
                        std::size_t events) {
    auto [found, isFirst] =
        states_.try_emplace(world.state(origins), State{states_.size(), done, events});
    State& state = found->second;
    path_.resize(done);
    path_.push_back(state.number);
    if (isFirst) {
        ++newStates_[done];
        return true;
    }
    if (state.events != done || state.triedFor == events) {
        return false;
    }
    state.triedFor = events;
    return true;
}

}  // namespace tavrel::simulation
