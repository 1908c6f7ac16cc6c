#include "platform/gnome/GnomeWindowServer.h"

#include <optional>
#include <utility>

#include "platform/gnome/GnomeLayoutServer.h"
#include "platform/layout/LayoutMoment.h"
#include "platform/layout/WholeLayoutSwitch.h"

namespace tavrel {

namespace {

using LastWord = layout::LastWord<gnome::MonitorState>;

/// An error says as little of the displays as silence does.
std::optional<LastWord::Answer> ask(gnome::DisplayConfig& config) {
    gnome::DisplayConfig::Reading reading = config.read();
    if (reading.reply == gnome::Reply::absent) {
        return LastWord::Answer{};
    }
    if (!reading.state.has_value()) {
        return std::nullopt;
    }
    return LastWord::Answer{
        .word = std::make_shared<const gnome::MonitorState>(*std::move(reading.state))};
}

LastWord::MakeAsk asking(const GnomeOptions& options) {
    return [options] {
        return [config = std::make_shared<gnome::BusDisplayConfig>(options)](bool /*isToProbe*/) {
            return ask(*config);
        };
    };
}

}  // namespace

namespace gnome {

bool answersLikeGnome(DisplayConfig& config) {
    const DisplayConfig::Reading reading = config.read();
    if (reading.reply != Reply::done) {
        return reading.reply == Reply::none;
    }
    // With nothing shown there is no layout to ask about.
    const auto configuration = configurationOf(*reading.state);
    if (!configuration.has_value() || configuration->logicalMonitors.empty()) {
        return true;
    }
    const Reply reply = config.apply(*configuration, DisplayConfig::Method::verify);
    return reply == Reply::done || reply == Reply::denied || reply == Reply::none;
}

bool answersLikeGnome(const GnomeOptions& options) {
    BusDisplayConfig config(options);
    return answersLikeGnome(config);
}

}  // namespace gnome

GnomeWindowServer::GnomeWindowServer(UserDefaults& store, const GnomeOptions& options)
    : directory_(store),
      lastWord_(asking(options), options.timeout),
      changeConfig_(options),
      remembered_(store) {}

bool GnomeWindowServer::canSwitch() {
    return lastWord_.askLately().word != nullptr;
}

ServerStatus GnomeWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    gnome::GnomeLayoutServer server(changeConfig_, directory_.all());
    return layout::switchDisplay(server, remembered_, lastSeen_, display, enabled);
}

std::unique_ptr<DisplayMoment> GnomeWindowServer::now() {
    return momentOf(lastWord_.ask(false));
}

std::unique_ptr<DisplayMoment> GnomeWindowServer::lately() {
    auto moment = momentOf(lastWord_.askInStep());
    return layout::showsAnything(*moment) ? std::move(moment) : now();
}

std::unique_ptr<DisplayMoment> GnomeWindowServer::momentOf(const LastWord::Answer& answer) {
    if (answer.word == nullptr) {
        return layout::silentMoment(std::nullopt, answer.isFresh);
    }
    gnome::MonitorState state = *answer.word;
    state.known = directory_.meet(gnome::identitiesIn(state));
    const layout::Layout layout = gnome::layoutOf(state);
    layout::noteSeen(lastSeen_, layout);
    return layout::momentOf(layout, answer.isFresh);
}

}  // namespace tavrel
