#pragma once

#include <algorithm>
#include <chrono>
#include <variant>
#include <vector>

#include "watchdog/protocol/Message.h"

namespace tavrel::watchdog {

/// Why no message was received.
enum class NoMessage {
    /// The other side is gone, perhaps in the middle of a message.
    gone,
    /// What came is not a message. Nothing that follows can be understood.
    malformed,
    timedOut,
};

using Received = std::variant<Message, NoMessage>;

/// One end of a conversation, to be used by one thread at a time. No call throws.
class MessageChannel {
public:
    virtual ~MessageChannel() = default;

    /// Returns whether it was sent, which does not mean that the other side will read it.
    /// Never blocks: for somebody who has long stopped reading, nothing is sent.
    virtual bool send(const Message& message) = 0;

    /// Blocks until the next message, but no longer than `timeout`; 0 takes only what is there
    /// already. What the other side sent before it ended is still received.
    virtual Received receive(std::chrono::milliseconds timeout) = 0;

    /// Shows the other side that the conversation is over, and blocks until it has closed
    /// its end. What it sends until then is discarded.
    virtual void hangUp() = 0;
};

/// Returns whether all were sent; stops at the first that is not.
inline bool sendAll(MessageChannel& channel, const std::vector<Message>& messages) {
    return std::all_of(messages.begin(), messages.end(),
                       [&](const Message& message) { return channel.send(message); });
}

}  // namespace tavrel::watchdog
