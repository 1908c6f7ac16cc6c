#pragma once

#include <chrono>
#include <cstdint>
#include <future>
#include <memory>

#include "platform/x11/connection/Connection.h"

namespace tavrel::x11 {

/// Keeps one connection to a server that may be missing, go away and come back.
///
/// To be used by one thread at a time. Cheap while there is no server: a new attempt is made at
/// most once a second, and never while an earlier one still waits for a server that accepted
/// the connection but does not answer.
class ServerLink {
public:
    explicit ServerLink(X11ServerOptions options);

    /// Returns the connection, after connecting anew if needed; null when there is no server.
    /// Blocks at most for the timeout. Valid until the next call.
    Connection* connection();

    /// Whether there was no server when it was last looked for, or the one there was has ended
    /// the connection. False when it has only stopped answering, and before the first call.
    bool isKnownToBeGone() const { return isKnownToBeGone_; }

    /// How many different connections there have been.
    std::uint64_t connectionsMade() const { return connectionsMade_; }

private:
    void dropIfLost();
    bool attemptIsDue() const;
    void startAttempt();

    X11ServerOptions options_;
    std::unique_ptr<Connection> connection_;
    std::future<std::unique_ptr<Connection>> attempt_;
    std::chrono::steady_clock::time_point nextAttempt_;
    std::uint64_t connectionsMade_ = 0;
    bool isKnownToBeGone_ = false;
};

}  // namespace tavrel::x11
