#include "platform/x11/snapshot/LastWord.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/x11/connection/ServerLink.h"
#include "platform/x11/snapshot/KeptSnapshot.h"

namespace tavrel::x11 {

namespace {

using MaybeAnswer = std::optional<LastWord::Answer>;

MaybeAnswer answer(Word word) {
    return LastWord::Answer{.word = std::make_shared<const Word>(std::move(word))};
}

MaybeAnswer silentUnless(bool isGone) {
    return isGone ? MaybeAnswer(LastWord::Answer{}) : std::nullopt;
}

class Asker {
public:
    explicit Asker(const X11ServerOptions& options) : link_(options) {}

    MaybeAnswer ask(Probing probing) {
        Connection* connection = link_.connection();
        if (connection == nullptr) {
            return silentUnless(link_.isKnownToBeGone());
        }
        if (!connection->hasRandr()) {
            return answer({.snapshot = nullptr});
        }
        if (std::exchange(connectionsUsed_, link_.connectionsMade()) != link_.connectionsMade()) {
            kept_.emplace(*connection);
        }
        if (auto snapshot = kept_->read(probing)) {
            return answer({.snapshot = std::move(snapshot)});
        }
        return silentUnless(connection->isLost() && !connection->hasTimedOut());
    }

private:
    ServerLink link_;
    std::uint64_t connectionsUsed_ = 0;
    /// Of the link's connection; used only while that is there.
    std::optional<KeptSnapshot> kept_;
};

}  // namespace

LastWord::MakeAsk askingServer(const X11ServerOptions& options) {
    return [options] {
        return [asker = std::make_shared<Asker>(options)](bool isToProbe) {
            return asker->ask(isToProbe ? Probing::always : Probing::never);
        };
    };
}

}  // namespace tavrel::x11
