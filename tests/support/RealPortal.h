#pragma once

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

/// The portal that desktops have, xdg-desktop-portal, on a message bus of a test's. Behind it is
/// what the test plays there: a ShortcutsBackend.
class RealPortal {
public:
    /// Starts it. Throws std::runtime_error when it is not installed.
    explicit RealPortal(const std::string& busAddress);

    /// What it has complained about.
    std::string complaints() const;

private:
    TemporaryFolder folder_;
    Janitor janitor_{folder_.path()};
    std::unique_ptr<ChildProcess> process_;
};

}  // namespace tavrel::support
