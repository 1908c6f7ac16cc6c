#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/UserDefaults.h"
#include "registry/StoredDisplay.h"

namespace tavrel {

/// The registry for somebody who reads it again and again: what is stored is asked for each time,
/// and decoded only when it has changed. For one thread.
class KnownDisplays {
public:
    /// `userDefaults` must outlive it.
    explicit KnownDisplays(UserDefaults& userDefaults) : userDefaults_(userDefaults) {}

    /// As `DisplayRegistry::knownDisplays`. Holds until the next call.
    const std::vector<StoredDisplay>& read();

private:
    UserDefaults& userDefaults_;
    /// Of which `records_` was made.
    std::optional<std::string> text_;
    std::vector<StoredDisplay> records_;
};

}  // namespace tavrel
