#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "platform/DisplayID.h"

/// What the application and its watchdog say to each other, and how it looks on the wire.
///
/// Both are installed together but need not be of one build, so every message carries its
/// version and a reader trusts nothing: what is not exactly a message is an error, never a
/// guess.
namespace tavrel::watchdog {

struct Message {
    enum class Kind : std::uint8_t {
        /// Watchdog: it has started. Its first message, sent once.
        ready = 1,
        /// Application: this display is, or may be, off because of us. No answer.
        alreadyOff = 2,
        /// Application: switch `display` on or off and answer under the same `id`.
        switchOff = 3,
        switchOn = 4,
        /// Watchdog: how the switch with this `id` went.
        answer = 5,
        /// Application: it ends in good order. What is still to be switched on, is; then the
        /// watchdog ends too.
        goodbye = 6,
        /// Application: its main thread is running. Sent about once a second. No answer.
        heartbeat = 7,
        /// Application: it has begun to end, and this display is to be on when it is gone,
        /// whoever switched it off. No answer.
        handOver = 8,
    };

    Kind kind = Kind::goodbye;
    /// Chosen by the application, to match answers to requests; 0 for all other kinds.
    std::uint32_t id = 0;
    /// 0 for kinds that are about no display.
    DisplayID display = 0;
    /// 0 for all but answers.
    ServerStatus status = 0;

    friend bool operator==(const Message&, const Message&) = default;
};

/// Every message is this long.
inline constexpr std::size_t messageSize = 20;
using MessageBytes = std::array<std::uint8_t, messageSize>;

/// Why bytes are not a message.
enum class MessageError {
    wrongLength,
    /// Does not begin as our messages do.
    foreign,
    otherVersion,
    unknownKind,
    /// A field has a value that it cannot have in this kind of message.
    impossibleField,
};

using Decoded = std::variant<Message, MessageError>;

MessageBytes encode(const Message& message);

/// The message that `encode` turns into exactly these bytes. All other bytes are errors, so
/// that no two sequences of bytes mean the same.
Decoded decode(std::span<const std::uint8_t> bytes);

/// Cuts a stream of bytes into messages. Never holds more than one message.
class MessageReader {
public:
    /// How many bytes are missing until the next message is complete.
    std::size_t missing() const { return messageSize - size_; }

    /// Takes the stream's next bytes. Returns the message once it is complete, std::nullopt
    /// until then. An error is final: where the next message would begin is unknown, so every
    /// later call returns that error again.
    ///
    /// REQUIRES: `bytes.size() <= missing()`.
    std::optional<Decoded> add(std::span<const std::uint8_t> bytes);

private:
    MessageBytes bytes_{};
    std::size_t size_ = 0;
    std::optional<MessageError> error_;
};

}  // namespace tavrel::watchdog
