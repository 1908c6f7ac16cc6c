#include "registry/StoredDisplay.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>

#include "platform/JsonNesting.h"

namespace tavrel::StoredFormat {
namespace {

using nlohmann::json;

/// The member `name` of `object`; null, which no member of ours may be, when it is missing.
const json& memberOf(const json& object, const char* name) {
    static const json missing;
    const auto found = object.find(name);
    return found == object.end() ? missing : *found;
}

std::optional<DisplayID> toID(const json& value) {
    if (!value.is_number()) {
        return std::nullopt;
    }
    // A double holds every identifier exactly and rounds no other integer to one.
    const auto number = value.get<double>();
    const bool isID = number >= 0 && number <= std::numeric_limits<DisplayID>::max() &&
                      number == std::trunc(number);
    return isID ? std::optional(static_cast<DisplayID>(number)) : std::nullopt;
}

std::optional<StoredDisplay> toRecord(const json& value) {
    const std::optional<DisplayID> id = toID(memberOf(value, "id"));
    const json& isBuiltIn = memberOf(value, "isBuiltIn");
    const json& lastSeenAt = memberOf(value, "lastSeenAt");
    if (!id || !isBuiltIn.is_boolean() || !lastSeenAt.is_number()) {
        return std::nullopt;
    }
    return StoredDisplay{*id, isBuiltIn.get<bool>(), {lastSeenAt.get<double>()}};
}

/// Appends `number` without an exponent, unless the zeros would outnumber the digits.
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

std::optional<std::vector<StoredDisplay>> decode(std::string_view text) {
    // The parser takes a zero byte for the end of its input; valid JSON has none.
    if (text.find('\0') != std::string_view::npos || isNestedTooDeep(text)) {
        return std::nullopt;
    }
    const json list = json::parse(text, /*cb=*/nullptr, /*allow_exceptions=*/false);
    if (!list.is_array()) {
        return std::nullopt;
    }
    std::vector<StoredDisplay> records;
    for (const json& value : list) {
        const std::optional<StoredDisplay> record = toRecord(value);
        if (!record) {
            return std::nullopt;
        }
        records.push_back(*record);
    }
    return records;
}

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
