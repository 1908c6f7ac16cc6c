#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <variant>

#include "platform/DisplayID.h"

/// What the application and its guard say to each other, and how it looks on the wire.
///
/// Both are installed together but need not be of one build, so every message tells its
/// version and a reader takes nothing on trust: what is not exactly a message is an error,
/// never a guess.
namespace tavrel::watchdog {

struct Message {
    enum class Kind : std::uint8_t {
        /// Guard: it has started. Its first message, sent once.
        ready = 1,
        /// Application: this display is, or may be, off because of us. No answer.
        alreadyOff = 2,
        /// Application: switch `display` on or off and answer under the same `id`.
        switchOff = 3,
        switchOn = 4,
        /// Guard: how the switch with this `id` went.
        answer = 5,
        /// Application: it ends in good order; nothing is left to do.
        goodbye = 6,
    };

    Kind kind = Kind::goodbye;
    /// Chosen by the application, to match answers to requests; 0 for all other kinds.
    std::uint32_t id = 0;
    /// 0 for kinds that are about none.
    DisplayID display = 0;
    /// 0 for all but answers.
    ServerStatus status = 0;

    friend bool operator==(const Message&, const Message&) = default;
};

/// Every message is this long.
inline constexpr std::size_t messageSize = 20;
using MessageBytes = std::array<std::uint8_t, messageSize>;

/// Why bytes are no message.
enum class MessageError {
    wrongLength,
    /// Something else altogether.
    foreign,
    otherVersion,
    unknownKind,
    /// A field holds what it cannot hold in this kind of message.
    impossibleField,
};

MessageBytes encode(const Message& message);

/// The message that `encode` makes these bytes of. All others are errors, so that no two
/// sequences of bytes mean the same.
std::variant<Message, MessageError> decode(std::span<const std::uint8_t> bytes);

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
