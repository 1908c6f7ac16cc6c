#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/MessageBus.h"

namespace tavrel::support {

/// A D-Bus session with the accessibility service and nothing else. Assistive technology is
/// switched on, so that programs started in it describe their windows.
class AccessibilityBus {
public:
    /// Keeps its files in `folder`, which must outlive it. `displayName` is that of the X server;
    /// empty where there is none. Blocks until both buses answer; throws std::runtime_error when
    /// one does not.
    AccessibilityBus(const std::filesystem::path& folder, const std::string& displayName,
                     Janitor& janitor);
    /// The same, in the session of that bus.
    AccessibilityBus(const std::filesystem::path& folder, const std::string& displayName,
                     const std::string& sessionAddress, Janitor& janitor);

    const std::string& sessionAddress() const { return sessionAddress_; }
    const std::string& accessibilityAddress() const { return accessibilityAddress_; }

private:
    void awaitAddress(const std::filesystem::path& folder);

    std::optional<MessageBus> session_;
    std::string sessionAddress_;
    ChildProcess launcher_;
    std::string accessibilityAddress_;
};

}  // namespace tavrel::support
