#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/x11/connection/LoopbackListener.h"

namespace tavrel {

/// Stands between programs and a real X server. What arrives at the other side is for the
/// conversation of each connection to say.
class ServerRelay {
public:
    /// Blocks until the bytes are on their way. Returns false when the other side has gone.
    using Send = std::function<bool(std::string_view bytes)>;

    /// One connection. Used by one thread of the relay's.
    class Conversation {
    public:
        virtual ~Conversation() = default;
        /// Takes in the next bytes, wherever they were cut, and sends on what is to arrive.
        /// Returning false ends the connection.
        virtual bool fromClient(std::string_view bytes, const Send& toServer) = 0;
        virtual bool fromServer(std::string_view bytes, const Send& toClient) = 0;
    };
    /// Called for each connection, on a thread of the relay's, on several at the same time.
    using Beginning = std::function<std::unique_ptr<Conversation>()>;

    /// Throws std::system_error when it can't listen. `server` is a display name, ":7".
    ServerRelay(const std::string& server, Beginning beginning);
    /// Ends all connections, and with them all calls.
    ~ServerRelay();
    ServerRelay(const ServerRelay&) = delete;
    ServerRelay& operator=(const ServerRelay&) = delete;

    /// Where programs find the server through this.
    const std::string& displayName() const { return socket_.displayName(); }

private:
    void accept();
    void relay(const FileDescriptor& client);

    const std::string serverPath_;
    const Beginning beginning_;
    LoopbackListener socket_;
    std::atomic<bool> stop_ = false;
    std::vector<std::thread> relays_;
    std::thread acceptor_;
};

}  // namespace tavrel
