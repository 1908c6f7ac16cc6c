#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/posix/FileDescriptor.h"
#include "tests/platform/x11/connection/LoopbackListener.h"
#include "tests/platform/x11/connection/WireStreams.h"

namespace tavrel {

/// Stands between programs and a real X server: passes on what they say to each other, and
/// tells of each request just before the server gets it. Whoever is told can hold the server
/// up at exactly that request, and can have the server say something else than it does.
class RequestRelay {
public:
    using Request = WireRequest;
    /// Both are called on a thread of the relay's.
    using Listener = std::function<void(Request)>;
    /// May change what the server says, but not its length. Returns false for what is to be lost.
    using Editor = std::function<bool(AnswerStream::Message&)>;

    /// Throws std::system_error when it can't listen. `server` is a display name, ":7".
    RequestRelay(const std::string& server, Listener listener, Editor editor = nullptr);
    /// Ends all connections.
    ~RequestRelay();
    RequestRelay(const RequestRelay&) = delete;
    RequestRelay& operator=(const RequestRelay&) = delete;

    /// Where programs find the server through this.
    const std::string& displayName() const { return socket_.displayName(); }
    /// How many bytes have been passed on, in both directions.
    std::size_t bytes() const { return bytes_; }

private:
    void accept();
    void relay(const FileDescriptor& client);
    bool passOn(const std::vector<RequestStream::Message>& messages, const FileDescriptor& server,
                AnswerStream& answers);
    bool passOn(std::vector<AnswerStream::Message> messages, const FileDescriptor& client);

    const std::string serverPath_;
    const Listener listener_;
    const Editor editor_;
    LoopbackListener socket_;
    std::atomic<bool> stop_ = false;
    std::atomic<std::size_t> bytes_ = 0;
    std::vector<std::thread> relays_;
    std::thread acceptor_;
};

}  // namespace tavrel
