#include <array>
#include <charconv>
#include <cmath>

#include "registry/StoredFormat.h"

namespace tavrel::StoredFormat {
namespace {

/// Without an exponent, unless the zeros would outnumber the digits.
void append(std::string& text, double number) {
    constexpr double smallest = 1e-4;
    constexpr double largest = 1e16;
    const double size = std::abs(number);
    const bool isOrdinary = size == 0 || (size >= smallest && size < largest);

    // Longest: sign, 17 digits, point, and an exponent of "e-308" or a leading "0.000".
    std::array<char, 32> digits{};
    const auto end =
        std::to_chars(digits.begin(), digits.end(), number,
                      isOrdinary ? std::chars_format::fixed : std::chars_format::scientific);
    text.append(digits.begin(), end.ptr);
}

}  // namespace

std::optional<std::string> encode(const std::vector<StoredDisplay>& records) {
    std::string text = "[";
    for (const StoredDisplay& record : records) {
        const double lastSeenAt = record.lastSeenAt.sinceReferenceDate;
        if (!std::isfinite(lastSeenAt)) {
            return std::nullopt;
        }
        if (text.size() > 1) {
            text += ',';
        }
        text += R"({"id":)" + std::to_string(record.id);
        text += record.isBuiltIn ? R"(,"isBuiltIn":true,"lastSeenAt":)"
                                 : R"(,"isBuiltIn":false,"lastSeenAt":)";
        append(text, lastSeenAt);
        text += '}';
    }
    text += ']';
    return text;
}

}  // namespace tavrel::StoredFormat
