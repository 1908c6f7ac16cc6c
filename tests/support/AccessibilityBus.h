#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"

namespace tavrel::support {

/// A D-Bus session with the accessibility service and nothing else. Assistive technology is
/// switched on, so that programs started in it describe their windows.
class AccessibilityBus {
public:
    /// Keeps its files in `folder`, which must outlive it. Blocks until both buses answer;
    /// throws std::runtime_error when one does not.
    AccessibilityBus(const std::filesystem::path& folder, const std::string& displayName,
                     Janitor& janitor);

    const std::string& sessionAddress() const { return sessionAddress_; }
    const std::string& accessibilityAddress() const { return accessibilityAddress_; }

private:
    std::string sessionAddress_;
    std::string accessibilityAddress_;
    ChildProcess session_;
    std::optional<ChildProcess> launcher_;
};

}  // namespace tavrel::support
