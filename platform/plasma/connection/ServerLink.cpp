#include "platform/plasma/connection/ServerLink.h"

#include <utility>

#include "platform/plasma/connection/WaylandSocket.h"

namespace tavrel::plasma {

namespace {
constexpr std::chrono::seconds pauseBetweenAttempts{1};
}

ServerLink::ServerLink(PlasmaServerOptions options, int cancel)
    : options_(std::move(options)), cancel_(cancel) {}

Session* ServerLink::session() {
    if (session_ != nullptr && !session_->connection->isLost()) {
        const bool isStillHeard = isHeard();
        // Whoever has waited for a silent server for so long is not to wait as long again.
        if (isStillHeard || !isKnownToBeGone_) {
            return session_.get();
        }
    }
    session_.reset();
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextAttempt_) {
        connect();
        nextAttempt_ = session_ == nullptr ? now + pauseBetweenAttempts : now;
    }
    return session_.get();
}

bool ServerLink::isHeard() {
    Connection& connection = *session_->connection;
    // What has just been announced is described a round trip later.
    const bool isAnswered =
        connection.roundTrip() && (session_->outputs->isWhole() || connection.roundTrip());
    if (isAnswered && session_->outputs->canConfigure()) {
        return true;
    }
    isKnownToBeGone_ = !connection.hasTimedOut();
    session_.reset();
    return false;
}

void ServerLink::connect() {
    WaylandSocket socket = connectSocket(options_.displayName);
    std::unique_ptr<Connection> connection;
    if (socket.descriptor.isOpen()) {
        connection = Connection::open(std::move(socket.descriptor), options_.timeout, cancel_);
    }
    if (connection == nullptr) {
        isKnownToBeGone_ = !socket.isCrowded;
        return;
    }
    session_ = std::make_unique<Session>(std::move(connection));
    // The first brings the globals; what they describe comes with the second.
    if (!session_->connection->roundTrip()) {
        isKnownToBeGone_ = !session_->connection->hasTimedOut();
        session_.reset();
    } else if (isHeard()) {
        isKnownToBeGone_ = false;
        ++sessionsMade_;
    }
}

}  // namespace tavrel::plasma
