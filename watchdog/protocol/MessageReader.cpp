#include "watchdog/protocol/MessageReader.h"

#include <algorithm>

namespace tavrel::watchdog {

std::optional<std::variant<Message, MessageError>> MessageReader::add(
    std::span<const std::uint8_t> bytes) {
    if (error_) {
        return *error_;
    }
    std::copy(bytes.begin(), bytes.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(size_));
    size_ += bytes.size();
    if (size_ < messageSize) {
        return std::nullopt;
    }
    size_ = 0;
    auto result = decode(bytes_);
    if (const auto* error = std::get_if<MessageError>(&result)) {
        error_ = *error;
    }
    return result;
}

}  // namespace tavrel::watchdog
