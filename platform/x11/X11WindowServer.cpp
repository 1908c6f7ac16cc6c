#include "platform/x11/X11WindowServer.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/layout/LayoutMoment.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel {

namespace {

std::unique_ptr<DisplayMoment> momentWithoutDisplays(const x11::LastWord::Answer& answer) {
    if (answer.word == nullptr) {
        return layout::silentMoment(std::nullopt, answer.isFresh);
    }
    // The displays of a server without RandR cannot be told apart, so none is known to be online;
    // those remembered from elsewhere can still be listed.
    return layout::silentMoment(std::vector<DisplayID>{}, answer.isFresh);
}

}  // namespace

X11WindowServer::X11WindowServer(UserDefaults& store, const X11ServerOptions& options)
    : directory_(store),
      lastWord_(x11::askingServer(options), options.timeout),
      changeLink_(options),
      remembered_(store) {}

bool X11WindowServer::canSwitch() {
    const x11::LastWord::Answer answer = lastWord_.askLately();
    return answer.word != nullptr && answer.word->snapshot != nullptr;
}

ServerStatus X11WindowServer::setDisplayEnabled(DisplayID display, bool enabled) {
    const std::lock_guard lock(changeMutex_);
    x11::Connection* connection = changeLink_.connection();
    if (connection == nullptr || !connection->hasRandr()) {
        return serverStatus::notImplemented;
    }
    // Whoever misses a display may have just plugged it in.
    x11::RandrLayoutServer server(*connection,
                                  enabled ? x11::Probing::always : x11::Probing::onContradiction,
                                  directory_.all());
    return x11::switchDisplay(server, remembered_, lastSeen_, display, enabled);
}

std::unique_ptr<DisplayMoment> X11WindowServer::now() {
    return momentOf(lastWord_.ask(false));
}

std::unique_ptr<DisplayMoment> X11WindowServer::lately() {
    auto moment = momentOf(lastWord_.askInStep());
    return layout::showsAnything(*moment) ? std::move(moment) : now();
}

std::unique_ptr<DisplayMoment> X11WindowServer::nowAfterProbing() {
    return momentOf(lastWord_.ask(true));
}

std::unique_ptr<DisplayMoment> X11WindowServer::momentOf(const x11::LastWord::Answer& answer) {
    if (answer.word == nullptr || answer.word->snapshot == nullptr) {
        return momentWithoutDisplays(answer);
    }
    return layout::momentOf(layoutIn(answer.word->snapshot), answer.isFresh);
}

std::shared_ptr<const layout::Layout> X11WindowServer::layoutIn(
    const std::shared_ptr<const x11::Snapshot>& snapshot) {
    const layout::KnownMonitors known = directory_.meet(x11::identitiesIn(*snapshot));
    const std::lock_guard lock(describedMutex_);
    if (described_.snapshot != snapshot || described_.known != known) {
        x11::Snapshot named = *snapshot;
        named.known = known;
        x11::noteSeen(lastSeen_, named);
        described_ = {.snapshot = snapshot,
                      .known = known,
                      .layout = std::make_shared<const layout::Layout>(x11::layoutOf(named))};
    }
    return described_.layout;
}

}  // namespace tavrel
