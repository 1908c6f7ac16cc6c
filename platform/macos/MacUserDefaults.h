#pragma once

#include "platform/UserDefaults.h"

namespace tavrel {

/// The preferences of the current application, which is the one that the main bundle's
/// identifier names. Values are stored as data.
///
/// A value that the system accepts but cannot write to the disk yet counts as stored: all
/// readers have it from then on, and the system tries again by itself.
class MacUserDefaults final : public UserDefaults {
public:
    std::optional<std::string> data(std::string_view key) override;
    /// Only fails for a key that is not UTF-8 and for want of memory.
    bool setData(std::string_view key, std::string_view bytes) override;
};

}  // namespace tavrel
