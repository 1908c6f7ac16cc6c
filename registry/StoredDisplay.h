#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/WallClock.h"

namespace tavrel {

/// One remembered display, as the registry stores it.
struct StoredDisplay {
    DisplayID id;
    /// Whether it is the machine's own panel, as last reported while it was online.
    bool isBuiltIn;
    /// When a merge last found it online.
    WallTime lastSeenAt;

    friend bool operator==(const StoredDisplay&, const StoredDisplay&) = default;
};

/// The registry's persisted form: a compact UTF-8 JSON array with one object per record,
/// `{"id":1,"isBuiltIn":true,"lastSeenAt":786000000.5}`. Stored values outlive the
/// program that wrote them, so neither names nor types may change.
namespace StoredFormat {

/// The records in the order of the text; std::nullopt unless all of it decodes.
///
/// Strict about what is read: one JSON value and nothing after it, valid UTF-8, no number
/// beyond a double's range, nesting to at most 512 levels; each of the three members
/// present and of its type. Lenient where typed JSON decoders are: members come in any
/// order, unknown ones are ignored whatever they hold, an `id` may be written as any
/// number with an integer value (`1.0`, `1e0`), and of a repeated member only the last
/// counts.
///
/// Safe for any input of any length: memory grows with the text, the stack does not.
std::optional<std::vector<StoredDisplay>> decode(std::string_view text);

/// The text for `records`, members in the order above, each time in the shortest form
/// that reads back the same. std::nullopt when a time is infinite or not a number, since
/// JSON has no such numbers.
std::optional<std::string> encode(const std::vector<StoredDisplay>& records);

}  // namespace StoredFormat

}  // namespace tavrel
