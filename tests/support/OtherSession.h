#pragma once

#include <string>

#include "tests/support/AccessibilityBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

/// One more session of a user on the same X server, with buses of its own: programs there know
/// nothing of those in the first.
class OtherSession {
public:
    /// Blocks until its buses answer. Throws std::runtime_error when they do not.
    explicit OtherSession(const std::string& displayName)
        : bus_(folder_.path(), displayName, janitor_) {}

    /// Makes a program one of this session.
    Environment environment() const {
        return {{"DBUS_SESSION_BUS_ADDRESS", bus_.sessionAddress()}};
    }
    const std::string& accessibilityBusAddress() const { return bus_.accessibilityAddress(); }

private:
    TemporaryFolder folder_;
    Janitor janitor_{folder_.path()};
    AccessibilityBus bus_;
};

}  // namespace tavrel::support
