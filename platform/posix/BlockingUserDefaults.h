#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/UserDefaults.h"

namespace tavrel {

/// A store behind which there is a file system: each call blocks for as long as that takes,
/// which may be for ever.
class BlockingUserDefaults : public UserDefaults {
public:
    /// Values by key.
    using Texts = std::map<std::string, std::string, std::less<>>;

    /// All that the store holds: nothing where there is none yet. std::nullopt when that cannot
    /// be known, because the system refuses to let it be read or its folder is missing.
    virtual std::optional<Texts> all() = 0;

    /// Whether a store that can be written would take this value. Never blocks.
    virtual bool canHold(std::string_view key, std::string_view bytes) const = 0;
};

}  // namespace tavrel
