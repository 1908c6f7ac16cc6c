#pragma once

#include <filesystem>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/MessageBus.h"

namespace tavrel::support {

/// A D-Bus session with the accessibility service and nothing else. Assistive technology is
/// switched on, so that programs started in it describe their windows.
class AccessibilityBus {
public:
    /// Keeps its files in `folder`, which must outlive it. Blocks until both buses answer;
    /// throws std::runtime_error when one does not.
    AccessibilityBus(const std::filesystem::path& folder, const std::string& displayName,
                     Janitor& janitor);

    const std::string& sessionAddress() const { return session_.address(); }
    const std::string& accessibilityAddress() const { return accessibilityAddress_; }

private:
    MessageBus session_;
    ChildProcess launcher_;
    std::string accessibilityAddress_;
};

}  // namespace tavrel::support
