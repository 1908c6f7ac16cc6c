#include "platform/x11/snapshot/LastWord.h"

#include <memory>
#include <optional>
#include <utility>

#include "platform/x11/connection/ServerLink.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

namespace {

using MaybeAnswer = std::optional<LastWord::Answer>;

MaybeAnswer answer(Word word) {
    return LastWord::Answer{.word = std::make_shared<const Word>(std::move(word))};
}

MaybeAnswer silentUnless(bool isGone) {
    return isGone ? MaybeAnswer(LastWord::Answer{}) : std::nullopt;
}

MaybeAnswer read(ServerLink& link, Probing probing) {
    Connection* connection = link.connection();
    if (connection == nullptr) {
        return silentUnless(link.isKnownToBeGone());
    }
    if (!connection->hasRandr()) {
        return answer({.hasRandr = false});
    }
    connection->discardEvents();
    if (auto snapshot = readSnapshot(*connection, probing)) {
        return answer({.snapshot = *std::move(snapshot)});
    }
    return silentUnless(connection->isLost() && !connection->hasTimedOut());
}

}  // namespace

LastWord::MakeAsk askingServer(const X11ServerOptions& options) {
    return [options] {
        return [link = std::make_shared<ServerLink>(options)](bool isToProbe) {
            return read(*link, isToProbe ? Probing::always : Probing::never);
        };
    };
}

}  // namespace tavrel::x11
