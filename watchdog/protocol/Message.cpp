#include "watchdog/protocol/Message.h"

#include <algorithm>

namespace tavrel::watchdog {
namespace {

// The layout, all numbers with their lowest byte first:
//   0  magic (4)   4  version (1)   5  kind (1)   6  length (2)
//   8  id (4)     12  display (4)  16  status (4)
constexpr std::size_t versionAt = 4;
constexpr std::size_t kindAt = 5;
constexpr std::size_t lengthAt = 6;
constexpr std::size_t idAt = 8;
constexpr std::size_t displayAt = 12;
constexpr std::size_t statusAt = 16;

constexpr std::uint32_t magic = 0x44475654;
constexpr std::uint8_t version = 1;

template <typename Number>
void put(MessageBytes& bytes, std::size_t at, Number number) {
    for (std::size_t i = 0; i < sizeof number; ++i) {
        bytes.at(at + i) = static_cast<std::uint8_t>(number >> (8 * i));
    }
}

std::uint32_t get(std::span<const std::uint8_t> bytes, std::size_t at, std::size_t size) {
    std::uint32_t number = 0;
    for (std::size_t i = 0; i < size; ++i) {
        number |= static_cast<std::uint32_t>(bytes[at + i]) << (8 * i);
    }
    return number;
}

bool isKnown(Message::Kind kind) {
    return kind >= Message::Kind::ready && kind <= Message::Kind::handOver;
}

bool fieldsArePossible(const Message& message) {
    // There is no display 0, but which displays exist is for the server to say.
    switch (message.kind) {
        case Message::Kind::ready:
        case Message::Kind::goodbye:
        case Message::Kind::heartbeat:
            return message.id == 0 && message.display == 0 && message.status == 0;
        case Message::Kind::alreadyOff:
        case Message::Kind::handOver:
            return message.id == 0 && message.status == 0;
        case Message::Kind::switchOff:
        case Message::Kind::switchOn:
            return message.id != 0 && message.status == 0;
        case Message::Kind::answer:
            return message.id != 0 && message.display == 0;
    }
    return false;
}

}  // namespace

MessageBytes encode(const Message& message) {
    MessageBytes bytes{};
    put(bytes, 0, magic);
    put(bytes, versionAt, version);
    put(bytes, kindAt, static_cast<std::uint8_t>(message.kind));
    put(bytes, lengthAt, static_cast<std::uint16_t>(messageSize));
    put(bytes, idAt, message.id);
    put(bytes, displayAt, message.display);
    put(bytes, statusAt, static_cast<std::uint32_t>(message.status));
    return bytes;
}

Decoded decode(std::span<const std::uint8_t> bytes) {
    if (bytes.size() != messageSize) {
        return MessageError::wrongLength;
    }
    if (get(bytes, 0, 4) != magic) {
        return MessageError::foreign;
    }
    if (bytes[versionAt] != version) {
        return MessageError::otherVersion;
    }
    if (get(bytes, lengthAt, 2) != messageSize) {
        return MessageError::wrongLength;
    }
    const auto kind = static_cast<Message::Kind>(bytes[kindAt]);
    if (!isKnown(kind)) {
        return MessageError::unknownKind;
    }
    const Message message{.kind = kind,
                          .id = get(bytes, idAt, 4),
                          .display = get(bytes, displayAt, 4),
                          .status = static_cast<ServerStatus>(get(bytes, statusAt, 4))};
    if (!fieldsArePossible(message)) {
        return MessageError::impossibleField;
    }
    return message;
}

std::optional<Decoded> MessageReader::add(std::span<const std::uint8_t> bytes) {
    if (error_) {
        return *error_;
    }
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += bytes.size();
    if (size_ < messageSize) {
        return std::nullopt;
    }
    size_ = 0;
    const Decoded result = decode(bytes_);
    if (const auto* error = std::get_if<MessageError>(&result)) {
        error_ = *error;
    }
    return result;
}

}  // namespace tavrel::watchdog
