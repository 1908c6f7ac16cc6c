#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "watchdog/protocol/Message.h"

namespace tavrel::watchdog {

/// Cuts a stream of bytes into messages. Holds less than one message, whatever it is fed.
class MessageReader {
public:
    /// How many bytes the message that has begun, or else the next one, still lacks.
    std::size_t missing() const { return messageSize - size_; }

    /// Takes the stream's next bytes. Gives the message once it is complete. An error is
    /// final: where the next message would begin is then unknown, so every later call gives
    /// that error again.
    ///
    /// REQUIRES: `bytes.size() <= missing()`.
    std::optional<std::variant<Message, MessageError>> add(std::span<const std::uint8_t> bytes);

private:
    MessageBytes bytes_{};
    std::size_t size_ = 0;
    std::optional<MessageError> error_;
};

}  // namespace tavrel::watchdog
