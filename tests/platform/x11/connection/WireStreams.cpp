#include "tests/platform/x11/connection/WireStreams.h"

#include <cstddef>
#include <utility>

namespace tavrel {

namespace {

constexpr std::size_t unit = 4;

std::uint8_t byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<std::uint8_t>(bytes[at]);
}

std::size_t shortAt(std::string_view bytes, std::size_t at) {
    return byteAt(bytes, at) + (std::size_t{byteAt(bytes, at + 1)} << 8U);
}

std::size_t longAt(std::string_view bytes, std::size_t at) {
    return shortAt(bytes, at) + (shortAt(bytes, at + 2) << 16U);
}

std::size_t padded(std::size_t length) {
    return (length + unit - 1) / unit * unit;
}

std::string takeFirst(std::string& from, std::size_t length) {
    std::string first = from.substr(0, length);
    from.erase(0, length);
    return first;
}

}  // namespace

std::vector<RequestStream::Message> RequestStream::take(std::string_view bytes) {
    pending_.append(bytes);
    std::vector<Message> found;
    for (std::size_t length = nextLength(); length != 0; length = nextLength()) {
        Message message{.request = std::nullopt, .bytes = takeFirst(pending_, length)};
        if (std::exchange(isSetUp_, true)) {
            message.request =
                WireRequest{.opcode = byteAt(message.bytes, 0), .minor = byteAt(message.bytes, 1)};
        }
        found.push_back(std::move(message));
    }
    return found;
}

/// Of what stands first; 0 while it hasn't arrived whole.
std::size_t RequestStream::nextLength() const {
    constexpr std::size_t setUpHeader = 12;
    constexpr std::size_t requestHeader = 4;
    constexpr std::size_t bigRequestHeader = 8;
    if (pending_.size() < (isSetUp_ ? requestHeader : setUpHeader)) {
        return 0;
    }
    std::size_t length = unit * shortAt(pending_, 2);
    if (!isSetUp_) {
        length = setUpHeader + padded(shortAt(pending_, 6)) + padded(shortAt(pending_, 8));
    } else if (length == 0) {
        // Too long for that place: its length stands behind.
        length = pending_.size() < bigRequestHeader ? 0 : unit * longAt(pending_, 4);
    }
    return pending_.size() < length ? 0 : length;
}

void AnswerStream::note(WireRequest request) {
    unanswered_[++requests_] = request;
}

std::vector<AnswerStream::Message> AnswerStream::take(std::string_view bytes) {
    pending_.append(bytes);
    std::vector<Message> found;
    for (std::size_t length = nextLength(); length != 0; length = nextLength()) {
        found.push_back(describe(takeFirst(pending_, length)));
    }
    return found;
}

AnswerStream::Message AnswerStream::describe(std::string bytes) {
    if (!std::exchange(isSetUp_, true)) {
        return {.kind = Kind::setUp, .request = std::nullopt, .bytes = std::move(bytes)};
    }
    if (byteAt(bytes, 0) > 1) {
        return {.kind = Kind::event, .request = std::nullopt, .bytes = std::move(bytes)};
    }
    const auto number = static_cast<std::uint16_t>(shortAt(bytes, 2));
    const WireRequest request = unanswered_[number];
    unanswered_.erase(number);
    return {.kind = byteAt(bytes, 0) == 0 ? Kind::error : Kind::reply,
            .request = request,
            .bytes = std::move(bytes)};
}

/// Of what stands first; 0 while it hasn't arrived whole.
std::size_t AnswerStream::nextLength() const {
    constexpr std::size_t setUpHeader = 8;
    constexpr std::size_t shortest = 32;
    constexpr std::uint8_t reply = 1;
    constexpr std::uint8_t genericEvent = 35;
    constexpr std::uint8_t sentByAClient = 0x80;
    if (pending_.size() < (isSetUp_ ? shortest : setUpHeader)) {
        return 0;
    }
    std::size_t length = shortest;
    if (!isSetUp_) {
        length = setUpHeader + unit * shortAt(pending_, 6);
    } else if (byteAt(pending_, 0) == reply ||
               (byteAt(pending_, 0) & ~sentByAClient) == genericEvent) {
        length += unit * longAt(pending_, 4);
    }
    return pending_.size() < length ? 0 : length;
}

}  // namespace tavrel
