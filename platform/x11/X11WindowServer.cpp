#include "platform/x11/X11WindowServer.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/layout/LayoutMoment.h"
#include "platform/x11/crtc/LayoutSwitch.h"
#include "platform/x11/crtc/RandrLayoutServer.h"
#include "platform/x11/snapshot/KeptSnapshot.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel {

namespace {

using LastWord = layout::LastWord<x11::Word>;
using MaybeAnswer = std::optional<LastWord::Answer>;

MaybeAnswer answerOf(x11::Word word) {
    return LastWord::Answer{.word = std::make_shared<const x11::Word>(std::move(word))};
}

MaybeAnswer silentUnless(bool isGone) {
    return isGone ? MaybeAnswer(LastWord::Answer{}) : std::nullopt;
}

/// Asks over a connection that is made anew whenever there is none.
class Asker {
public:
    explicit Asker(const X11ServerOptions& options) : link_(options) {}

    MaybeAnswer ask(x11::Probing probing) {
        x11::Connection* connection = link_.connection();
        if (connection == nullptr) {
            return silentUnless(link_.isKnownToBeGone());
        }
        if (!connection->hasRandr()) {
            return answerOf({.snapshot = nullptr});
        }
        if (std::exchange(connectionsUsed_, link_.connectionsMade()) != link_.connectionsMade()) {
            kept_.emplace(*connection);
        }
        if (auto snapshot = kept_->read(probing)) {
            return answerOf({.snapshot = std::move(snapshot)});
        }
        return silentUnless(connection->isLost() && !connection->hasTimedOut());
    }

private:
    x11::ServerLink link_;
    std::uint64_t connectionsUsed_ = 0;
    /// Of the link's connection; used only while that is there.
    std::optional<x11::KeptSnapshot> kept_;
};

LastWord::MakeAsk asking(const X11ServerOptions& options) {
    return [options] {
        return [asker = std::make_shared<Asker>(options)](bool isToProbe) {
            return asker->ask(isToProbe ? x11::Probing::always : x11::Probing::never);
        };
    };
}

bool hasExtension(x11::Connection& connection, std::string_view name) {
    const auto cookie =
        xcb_query_extension(connection.get(), static_cast<std::uint16_t>(name.size()), name.data());
    const auto reply = connection.reply<xcb_query_extension_reply_t>(cookie.sequence);
    return reply != nullptr && reply->present != 0;
}

std::unique_ptr<DisplayMoment> momentWithoutDisplays(const LastWord::Answer& answer) {
    if (answer.word == nullptr) {
        return layout::silentMoment(std::nullopt, answer.isFresh);
    }
    // The displays of a server without RandR cannot be told apart, so none is known to be online;
    // those remembered from elsewhere can still be listed.
    return layout::silentMoment(std::vector<DisplayID>{}, answer.isFresh);
}

}  // namespace

std::optional<bool> isXwayland(const X11ServerOptions& options) {
    const auto connection = x11::Connection::connect(options);
    if (connection == nullptr) {
        return std::nullopt;
    }
    if (hasExtension(*connection, "XWAYLAND")) {
        return true;
    }
    const auto snapshot = connection->hasRandr()
                              ? x11::readSnapshot(*connection, x11::Probing::never)
                              : std::optional<x11::Snapshot>();
    return snapshot.has_value() &&
           std::any_of(snapshot->outputs.begin(), snapshot->outputs.end(),
                       [](const x11::Output& each) { return each.name.starts_with("XWAYLAND"); });
}

X11WindowServer::X11WindowServer(UserDefaults& store, const X11ServerOptions& options)
    : directory_(store),
      lastWord_(asking(options), options.timeout),
      changeLink_(options),
      remembered_(store) {}

bool X11WindowServer::canSwitch() {
    const LastWord::Answer answer = lastWord_.askLately();
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

std::unique_ptr<DisplayMoment> X11WindowServer::momentOf(const LastWord::Answer& answer) {
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
