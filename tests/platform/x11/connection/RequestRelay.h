#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/x11/connection/LoopbackListener.h"

namespace tavrel {

/// Stands between programs and a real X server: passes on what they say to each other, and
/// tells of each request just before the server gets it. Whoever is told can hold the server
/// up at exactly that request.
class RequestRelay {
public:
    struct Request {
        std::uint8_t opcode = 0;
        /// An extension's own number of the request.
        std::uint8_t minor = 0;

        friend bool operator==(const Request&, const Request&) = default;
    };
    /// Called on a thread of the relay's.
    using Listener = std::function<void(Request)>;

    /// Throws std::system_error when it can't listen. `server` is a display name, ":7".
    RequestRelay(const std::string& server, Listener listener);
    /// Ends all connections.
    ~RequestRelay();
    RequestRelay(const RequestRelay&) = delete;
    RequestRelay& operator=(const RequestRelay&) = delete;

    /// Where programs find the server through this.
    const std::string& displayName() const { return socket_.displayName(); }

private:
    void accept();
    void relay(const FileDescriptor& client) const;

    const std::string serverPath_;
    const Listener listener_;
    LoopbackListener socket_;
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> relays_;
    std::thread acceptor_;
};

}  // namespace tavrel
