#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>

#include "registry/StoredFormat.h"

namespace tavrel::StoredFormat {
namespace {

/// Builds the records straight from the parser's events: the registry is read every
/// second, and a tree of the whole text would cost several times as much.
///
/// Every event returns whether to go on; the first false makes the text unreadable.
class RecordReader {
public:
    std::vector<StoredDisplay> takeRecords() { return std::move(records_); }

    bool boolean(bool value) {
        if (member_ == Member::isBuiltIn && isInRecord()) {
            record_.isBuiltIn = value;
            hasIsBuiltIn_ = true;
            return true;
        }
        return isIgnoring();
    }

    bool number_integer(std::int64_t value) { return number(value); }
    bool number_unsigned(std::uint64_t value) { return number(value); }
    bool number_float(double value, const std::string& /*text*/) { return number(value); }

    /// A kind of value that no member of ours has.
    struct OtherKind {
        RecordReader& reader;
        bool operator()(auto&&... /*value*/) const { return reader.isIgnoring(); }
    };
    OtherKind null{*this};
    OtherKind string{*this};
    OtherKind binary{*this};

    bool start_array(std::size_t /*size*/) {
        const bool isExpected = depth_ == outside || isIgnoring();
        return isExpected && descend();
    }

    bool end_array() {
        --depth_;
        return true;
    }

    bool start_object(std::size_t /*size*/) {
        const bool isExpected = depth_ == inList || isIgnoring();
        return isExpected && descend();
    }

    bool key(const std::string& name) {
        if (isInRecord()) {
            member_ = name == "id"           ? Member::id
                      : name == "isBuiltIn"  ? Member::isBuiltIn
                      : name == "lastSeenAt" ? Member::lastSeenAt
                                             : Member::unknown;
        }
        return true;
    }

    bool end_object() {
        if (isInRecord()) {
            if (!hasID_ || !hasIsBuiltIn_ || !hasLastSeenAt_) {
                return false;
            }
            records_.push_back(record_);
            hasID_ = hasIsBuiltIn_ = hasLastSeenAt_ = false;
        }
        --depth_;
        return true;
    }

    bool parse_error(auto&&... /*where*/) { return false; }

private:
    enum class Member { unknown, id, isBuiltIn, lastSeenAt };

    static constexpr int outside = 0;
    static constexpr int inList = 1;
    static constexpr int inRecord = 2;
    static constexpr int deepest = 512;

    bool isInRecord() const { return depth_ == inRecord; }
    /// Whether the value that starts now belongs to a member we do not know.
    bool isIgnoring() const {
        return depth_ > inRecord || (isInRecord() && member_ == Member::unknown);
    }
    bool descend() { return ++depth_ <= deepest; }

    template <class Number>
    bool number(Number value) {
        if (isInRecord() && member_ == Member::id) {
            return setID(value);
        }
        if (isInRecord() && member_ == Member::lastSeenAt) {
            record_.lastSeenAt = {static_cast<double>(value)};
            hasLastSeenAt_ = true;
            return true;
        }
        return isIgnoring();
    }

    bool setID(std::integral auto value) {
        if (!std::in_range<DisplayID>(value)) {
            return false;
        }
        record_.id = static_cast<DisplayID>(value);
        hasID_ = true;
        return true;
    }

    bool setID(double value) {
        const bool fits = value >= 0 && value <= std::numeric_limits<DisplayID>::max();
        return fits && value == std::trunc(value) && setID(static_cast<std::uint64_t>(value));
    }

    std::vector<StoredDisplay> records_;
    int depth_ = outside;
    Member member_ = Member::unknown;
    StoredDisplay record_{};
    bool hasID_ = false;
    bool hasIsBuiltIn_ = false;
    bool hasLastSeenAt_ = false;
};

}  // namespace

std::optional<std::vector<StoredDisplay>> decode(std::string_view text) {
    // The parser takes a zero byte for the end of its input; in a JSON text there is none.
    if (text.find('\0') != std::string_view::npos) {
        return std::nullopt;
    }
    RecordReader reader;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &reader)) {
        return std::nullopt;
    }
    return reader.takeRecords();
}

}  // namespace tavrel::StoredFormat
