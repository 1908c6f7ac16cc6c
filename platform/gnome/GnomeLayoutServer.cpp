#include "platform/gnome/GnomeLayoutServer.h"

#include <algorithm>
#include <optional>

namespace tavrel::gnome {

namespace {

/// How often a layout is applied anew because the hardware, or another program, has changed what
/// it was made for.
constexpr int mostTries = 5;

bool isActive(const layout::Layout& layout, DisplayID display) {
    const layout::Output* output = layout.output(display);
    return output != nullptr && output->isActive();
}

/// Whether all that was to go off has gone off, and all that was to come on has come.
bool hasBecome(const layout::WholeLayout& wanted, const layout::Layout& before,
               const layout::Layout& now) {
    return std::all_of(wanted.places.begin(), wanted.places.end(), [&](const auto& place) {
        const bool isToBeOn = place.shown.has_value();
        return isActive(before, place.display) == isToBeOn ||
               isActive(now, place.display) == isToBeOn;
    });
}

}  // namespace

Reply GnomeLayoutServer::look() {
    DisplayConfig::Reading reading = config_.read();
    if (reading.reply == Reply::done) {
        state_ = *std::move(reading.state);
        state_.known = known_;
    }
    return reading.reply;
}

layout::WholeLayoutServer::Reading GnomeLayoutServer::read() {
    switch (look()) {
        case Reply::done:
            return {.layout = layoutOf(state_)};
        case Reply::refused:
        case Reply::denied:
            return {.status = serverStatus::cannotComplete};
        case Reply::absent:
        case Reply::none:
            break;
    }
    return {.status = serverStatus::notImplemented};
}

layout::WholeLayoutServer::Outcome GnomeLayoutServer::apply(const layout::WholeLayout& wanted) {
    const auto configuration = configurationOf(wanted, state_);
    if (!configuration.has_value()) {
        return Outcome::refused;
    }
    switch (config_.apply(*configuration, DisplayConfig::Method::temporary)) {
        case Reply::done:
            makeItStay(layoutOf(state_), wanted);
            return Outcome::applied;
        case Reply::denied:
            return config_.isAllowed() ? Outcome::outdated : Outcome::forbidden;
        case Reply::refused:
            return Outcome::refused;
        case Reply::absent:
        case Reply::none:
            break;
    }
    return Outcome::silent;
}

/// Applies once more what has come of it, if it is what was wanted: another program may have
/// changed it meanwhile. The change itself has been made, however this goes.
void GnomeLayoutServer::makeItStay(const layout::Layout& before,
                                   const layout::WholeLayout& wanted) {
    Reply reply = Reply::denied;
    for (int tries = 0; tries < mostTries && reply == Reply::denied; ++tries) {
        if (look() != Reply::done || !hasBecome(wanted, before, layoutOf(state_))) {
            return;
        }
        const auto configuration = configurationOf(state_);
        if (!configuration.has_value()) {
            return;
        }
        reply = config_.apply(*configuration, DisplayConfig::Method::temporary);
    }
}

}  // namespace tavrel::gnome
