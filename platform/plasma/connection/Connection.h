#pragma once

#include <wayland-client.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ServerTimeout.h"
#include "platform/posix/FileDescriptor.h"

namespace tavrel {

/// Which Wayland server, and how long to wait for its answers.
struct PlasmaServerOptions {
    /// As in the WAYLAND_DISPLAY variable, which is used when this is std::nullopt.
    std::optional<std::string> displayName = std::nullopt;
    /// How long the server may take over each answer before the connection is given up.
    std::chrono::milliseconds timeout = serverTimeout;
};

namespace plasma {

/// One connection to a Wayland server.
///
/// To be used by one thread at a time. Nothing here blocks for longer than the timeout: when
/// the server has gone, or stays silent for longer than that, the connection is lost for good.
/// Nothing here ends the process.
class Connection {
public:
    /// Null when libwayland is out of memory. When `cancel` becomes readable, a descriptor that
    /// is not owned, nothing waits any longer and the connection is lost; -1 for none.
    static std::unique_ptr<Connection> open(FileDescriptor socket,
                                            std::chrono::milliseconds timeout, int cancel = -1);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    wl_display* get() const { return display_; }
    /// Readable when something has arrived.
    int descriptor() const { return wl_display_get_fd(display_); }

    /// Blocks until the server has carried out all requests made so far, and what it said
    /// until then has been passed on. Returns false when the connection is lost.
    bool roundTrip();

    /// Passes on what arrives until `isDone`. Returns false when the connection is lost.
    bool await(const std::function<bool()>& isDone);

    /// Passes on what has arrived, and notices when the connection has ended. Never blocks.
    void passOnArrived();

    bool isLost() const { return isLost_; }
    /// Whether it was lost because the server stayed silent; it may be there all the same.
    bool hasTimedOut() const { return hasTimedOut_; }

private:
    using Deadline = std::chrono::steady_clock::time_point;

    Connection(wl_display* display, std::chrono::milliseconds timeout, int cancel)
        : display_(display), timeout_(timeout), cancel_(cancel) {}

    bool passOn();
    bool read(Deadline deadline);

    wl_display* display_;
    std::chrono::milliseconds timeout_;
    int cancel_;
    bool isLost_ = false;
    bool hasTimedOut_ = false;
};

}  // namespace plasma
}  // namespace tavrel
