#pragma once

#include <functional>
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
    /// is absent, holds something other than bytes, or the store cannot be read and nothing of
    /// it is known. What this process wrote shows at once, what another wrote maybe only later.
    virtual std::optional<std::string> data(std::string_view key) = 0;

    /// Replaces the value under `key`, leaving all other keys as they are. Returns whether
    /// `data` gives it from now on; when not, the old value is still there.
    ///
    /// When this returns true, the value is on its way to the disk and normally there. A store
    /// may also keep in memory what it cannot write now, and write it as soon as it can.
    virtual bool setData(std::string_view key, std::string_view bytes) = 0;

    /// Blocks until what this process has written is on the disk, or is known not to get there now.
    virtual void settle() {}

    /// What becomes of a value (std::nullopt: there is none); std::nullopt leaves it as it is.
    using Change = std::function<std::optional<std::string>(const std::optional<std::string>&)>;

    /// Replaces the value under `key` by what `change` makes of it. Returns as `setData` does,
    /// and true when `change` left the value as it is.
    ///
    /// `change` is called on the calling thread before this returns, more than once if others
    /// write meanwhile, and must not use the store. A store that processes share lets nobody's
    /// write to the key come in between, and so overrides this.
    virtual bool update(std::string_view key, const Change& change) {
        const std::optional<std::string> bytes = change(data(key));
        return !bytes || setData(key, *bytes);
    }
};

}  // namespace tavrel
