#pragma once

#include <chrono>
#include <optional>
#include <utility>

#include "platform/posix/FileDescriptor.h"
#include "watchdog/protocol/MessageChannel.h"

namespace tavrel::watchdog {

/// A conversation over a connected stream socket. Sending to a lost peer returns false and
/// never raises SIGPIPE.
class MessageSocket : public MessageChannel {
public:
    explicit MessageSocket(FileDescriptor socket);

    bool send(const Message& message) override;
    Received receive(std::chrono::milliseconds timeout) override;
    void hangUp() override;

    /// Readable once the next message has begun to arrive or the other side is gone.
    int descriptor() const { return socket_.number(); }

private:
    using Deadline = std::chrono::steady_clock::time_point;
    bool becomesReadable(Deadline deadline) const;

    FileDescriptor socket_;
    MessageReader reader_;
};

/// The two ends of a new connection that nobody else can reach. Neither stays open in
/// programs that this one starts. std::nullopt when the system is out of descriptors.
std::optional<std::pair<FileDescriptor, FileDescriptor>> makeSocketPair();

}  // namespace tavrel::watchdog
