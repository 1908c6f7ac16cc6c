#pragma once

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

/// The X server that draws into a Wayland compositor's windows, as a client of one. It leaves
/// nothing behind, also when this process dies. Use it on the thread that created it.
class Xwayland {
public:
    static bool isInstalled();

    /// `waylandDisplay` as in the WAYLAND_DISPLAY variable, a path. Blocks until the server accepts
    /// connections. Throws std::runtime_error with its messages when it does not start.
    explicit Xwayland(const std::string& waylandDisplay);
    Xwayland(const Xwayland&) = delete;
    Xwayland& operator=(const Xwayland&) = delete;

    /// As in the DISPLAY variable.
    const std::string& displayName() const { return displayName_; }

private:
    TemporaryFolder folder_;
    Janitor janitor_{folder_.path()};
    std::string displayName_;
    std::unique_ptr<ChildProcess> server_;
};

}  // namespace tavrel::support
