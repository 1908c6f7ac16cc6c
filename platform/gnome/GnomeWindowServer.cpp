#include "platform/gnome/GnomeWindowServer.h"

#include <optional>
#include <utility>

#include "platform/gnome/LayoutSwitch.h"
#include "platform/layout/LayoutMoment.h"

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

GnomeWindowServer::GnomeWindowServer(UserDefaults& store, const GnomeOptions& options)
    : directory_(store),
      lastWord_(asking(options), options.timeout),
      changeConfig_(options),
      remembered_(store) {}

bool GnomeWindowServer::canSwitch() {
    return lastWord_.ask(false).word != nullptr;
}

ServerStatus GnomeWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    return gnome::switchDisplay(changeConfig_, directory_.all(), remembered_, lastSeen_, display,
                                enabled);
}

std::unique_ptr<DisplayMoment> GnomeWindowServer::now() {
    const LastWord::Answer answer = lastWord_.ask(false);
    if (answer.word == nullptr) {
        return layout::silentMoment(std::nullopt, answer.isFresh);
    }
    gnome::MonitorState state = *answer.word;
    state.known = directory_.meet(gnome::identitiesIn(state));
    gnome::noteSeen(lastSeen_, state);
    return layout::momentOf(gnome::layoutOf(state), answer.isFresh);
}

}  // namespace tavrel
