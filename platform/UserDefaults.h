#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrel {

/// The application's persistent key/value store. A value is a string of bytes.
///
/// Thread-safe, and safe against other processes using the same store. No call throws.
class UserDefaults {
public:
    virtual ~UserDefaults() = default;

    /// The bytes under `key`, complete, as one `setData` wrote them. std::nullopt when the key
    /// is absent, holds something other than bytes, or the store cannot be read.
    virtual std::optional<std::string> data(std::string_view key) = 0;

    /// Replaces the value under `key`, leaving all other keys as they are. Returns
    /// whether it was stored; when not, the old value is still there.
    virtual bool setData(std::string_view key, std::string_view bytes) = 0;
};

}  // namespace tavrel
