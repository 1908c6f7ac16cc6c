#include "platform/plasma/PlasmaWindowServer.h"

#include <chrono>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/layout/LayoutMoment.h"
#include "platform/layout/WholeLayoutSwitch.h"
#include "platform/plasma/PlasmaLayoutServer.h"

namespace tavrel {

namespace {

using LastWord = layout::LastWord<plasma::OutputState>;

LastWord::MakeAsk askingServer(const PlasmaServerOptions& options) {
    return [options] {
        return [link = std::make_shared<plasma::ServerLink>(options)](
                   bool /*isToProbe*/) -> std::optional<LastWord::Answer> {
            if (const plasma::Session* session = link->session()) {
                return LastWord::Answer{
                    .word = std::make_shared<const plasma::OutputState>(session->outputs->state())};
            }
            return link->isKnownToBeGone() ? std::optional(LastWord::Answer{}) : std::nullopt;
        };
    };
}

}  // namespace

bool isPlasmaOffered(const std::optional<std::string>& displayName) {
    constexpr std::chrono::seconds timeout{2};
    plasma::ServerLink link({.displayName = displayName, .timeout = timeout});
    if (link.session() != nullptr) {
        return true;
    }
    const char* desktop = std::getenv("XDG_CURRENT_DESKTOP");
    return !link.isKnownToBeGone() && desktop != nullptr &&
           std::string_view(desktop).find("KDE") != std::string_view::npos;
}

PlasmaWindowServer::PlasmaWindowServer(UserDefaults& store, const PlasmaServerOptions& options)
    : directory_(store),
      lastWord_(askingServer(options), options.timeout),
      changeLink_(options),
      remembered_(store) {}

bool PlasmaWindowServer::canSwitch() {
    return lastWord_.askLately().word != nullptr;
}

ServerStatus PlasmaWindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    plasma::PlasmaLayoutServer server(changeLink_, directory_.all());
    return layout::switchDisplay(server, remembered_, lastSeen_, display, enabled);
}

std::unique_ptr<DisplayMoment> PlasmaWindowServer::now() {
    return momentOf(lastWord_.ask(false));
}

std::unique_ptr<DisplayMoment> PlasmaWindowServer::lately() {
    auto moment = momentOf(lastWord_.askInStep());
    return layout::showsAnything(*moment) ? std::move(moment) : now();
}

std::unique_ptr<DisplayMoment> PlasmaWindowServer::momentOf(const LastWord::Answer& answer) {
    if (answer.word == nullptr) {
        return layout::silentMoment(std::nullopt, answer.isFresh);
    }
    plasma::OutputState state = *answer.word;
    state.known = directory_.meet(plasma::identitiesIn(state));
    const layout::Layout layout = plasma::layoutOf(state);
    layout::noteSeen(lastSeen_, layout);
    return layout::momentOf(layout, answer.isFresh);
}

}  // namespace tavrel
