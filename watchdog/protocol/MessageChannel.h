#pragma once

#include <variant>

#include "watchdog/protocol/Message.h"

namespace tavrel::watchdog {

/// Why no message came.
enum class NoMessage {
    /// The other side is gone, perhaps in the middle of a message.
    gone,
    /// What came is no message. Nothing more will be understood.
    malformed,
    timedOut,
};

using Received = std::variant<Message, NoMessage>;

/// One end of a conversation. To be used by one thread at a time. No call throws.
class MessageChannel {
public:
    virtual ~MessageChannel() = default;

    /// Returns whether it is on its way; not whether the other side still lives to read it.
    virtual bool send(const Message& message) = 0;

    /// Waits for the next message as long as it takes. What the other side sent before it
    /// went is still received.
    virtual Received receive() = 0;

    /// Shows the other side that the conversation is over, and returns when it has gone
    /// too. What it says until then is not read.
    virtual void hangUp() = 0;
};

}  // namespace tavrel::watchdog
