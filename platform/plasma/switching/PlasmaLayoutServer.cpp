#include "platform/plasma/switching/PlasmaLayoutServer.h"

#include <algorithm>

#include "platform/plasma/switching/Configuration.h"

namespace tavrel::plasma {

namespace {

/// What has come on must be what was asked for; where it stands, the server has confirmed.
bool isCarriedOut(const layout::WholeLayout& wanted, const layout::Layout& before,
                  const layout::Layout& now) {
    return std::all_of(wanted.places.begin(), wanted.places.end(), [&](const auto& place) {
        const layout::Output* output = now.output(place.display);
        if (output == nullptr || output->isActive() != place.shown.has_value()) {
            return false;
        }
        const layout::Output* was = before.output(place.display);
        const bool hasComeOn = output->isActive() && (was == nullptr || !was->isActive());
        return !hasComeOn || (output->shown->mode == place.shown->mode &&
                              output->shown->rotation == place.shown->rotation);
    });
}

}  // namespace

layout::WholeLayoutServer::Reading PlasmaLayoutServer::read() {
    std::optional<layout::Layout> now = look();
    if (!now.has_value()) {
        return {.status = serverStatus::notImplemented};
    }
    layout_ = *now;
    return {.layout = std::move(now)};
}

layout::WholeLayoutServer::Outcome PlasmaLayoutServer::apply(const layout::WholeLayout& wanted) {
    const Outcome outcome = ask(wanted);
    if (outcome != Outcome::applied) {
        return outcome;
    }
    const std::optional<layout::Layout> now = look();
    if (!now.has_value()) {
        return Outcome::lost;
    }
    if (isCarriedOut(wanted, layout_, *now)) {
        return Outcome::applied;
    }
    return ask(layout::wholeOf(layout_)) == Outcome::silent ? Outcome::silent : Outcome::refused;
}

std::optional<layout::Layout> PlasmaLayoutServer::look() {
    const Session* session = link_.session();
    return session == nullptr ? std::nullopt : std::optional(layoutOf(stateOf(*session)));
}

OutputState PlasmaLayoutServer::stateOf(const Session& session) const {
    OutputState state = session.outputs->state();
    state.known = known_;
    return state;
}

layout::WholeLayoutServer::Outcome PlasmaLayoutServer::ask(const layout::WholeLayout& wanted) {
    const Session* session = link_.current();
    if (session == nullptr || session->connection->isLost()) {
        return Outcome::lost;
    }
    Configuration configuration(*session->outputs, stateOf(*session));
    if (!configuration.fill(wanted)) {
        return Outcome::refused;
    }
    if (!configuration.apply(*session->connection)) {
        return session->connection->hasTimedOut() ? Outcome::silent : Outcome::lost;
    }
    return configuration.isApplied() ? Outcome::applied : Outcome::refused;
}

}  // namespace tavrel::plasma
