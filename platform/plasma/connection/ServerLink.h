#pragma once

#include <chrono>
#include <memory>
#include <utility>

#include "platform/plasma/connection/Connection.h"
#include "platform/plasma/connection/Outputs.h"

namespace tavrel::plasma {

/// A connection, and what was heard on it.
struct Session {
    std::unique_ptr<Connection> connection;
    std::unique_ptr<Outputs> outputs;

    explicit Session(std::unique_ptr<Connection> made)
        : connection(std::move(made)), outputs(std::make_unique<Outputs>(*connection)) {}
};

/// Keeps one connection to a Plasma server that may be missing, go away and come back.
///
/// To be used by one thread at a time. Cheap while there is no server: after an attempt that
/// failed, there is none for a second. A hot plug may end a connection while the server is well,
/// so the first attempt after that is made at once.
class ServerLink {
public:
    /// `cancel` is that of its connections.
    explicit ServerLink(PlasmaServerOptions options, int cancel = -1);

    /// Returns a session, after connecting anew if needed, in which everything has been heard
    /// that the server has said until now; null when there is none. Blocks at most for a few
    /// timeouts. Valid until the next call.
    Session* session();

    /// The session as it was left; null when there is none. Never blocks.
    Session* current() const { return session_.get(); }

    /// Whether there was no Plasma server when it was last looked for, or the one there was has
    /// ended the connection. False when it has only stopped answering, and before the first
    /// call.
    bool isKnownToBeGone() const { return isKnownToBeGone_; }

private:
    /// Waits until all has been heard that the server has said. Without that, or when its outputs
    /// can't be configured, ends the session and returns false.
    bool catchUp();
    void connect();

    PlasmaServerOptions options_;
    int cancel_;
    std::unique_ptr<Session> session_;
    std::chrono::steady_clock::time_point nextAttempt_;
    bool isKnownToBeGone_ = false;
};

}  // namespace tavrel::plasma
