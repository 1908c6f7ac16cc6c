#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/support/DisplayNumber.h"
#include "tests/support/Janitor.h"
#include "tests/support/Monitor.h"
#include "tests/support/OtherClient.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

class AccessibilityBus;
class ChildProcess;

/// A real X server for one test, without hardware: Xorg with the dummy driver on a free display
/// number. It leaves nothing behind, also when this process dies. Use it on the thread that
/// created it.
class VirtualDesktop {
public:
    struct Options {
        /// 1 to 16, each 1920×1080, side by side, DUMMY0 leftmost and primary.
        int monitors = 3;
        /// Without it the server offers no RandR and there is one fixed screen.
        bool randr = true;
        /// Also runs a private D-Bus session with assistive technology switched on.
        bool accessibility = false;
        /// Further arguments for the server.
        std::vector<std::string> serverArguments = {};
    };

    /// Blocks until the server answers and shows the monitors. Throws std::runtime_error with
    /// the server's own messages when it does not start.
    VirtualDesktop() : VirtualDesktop(Options{}) {}
    explicit VirtualDesktop(const Options& options);
    ~VirtualDesktop();
    VirtualDesktop(const VirtualDesktop&) = delete;
    VirtualDesktop& operator=(const VirtualDesktop&) = delete;

    /// As in the DISPLAY variable, ":7".
    const std::string& displayName() const { return displayName_; }
    /// The address of the private D-Bus session; empty without `accessibility`.
    std::string sessionBusAddress() const;
    /// The address of the bus assistive technology uses; empty without `accessibility`.
    std::string accessibilityBusAddress() const;

    /// The connected outputs, as the X server itself describes them.
    std::vector<Monitor> monitors() const;
    /// How many of them are on.
    int monitorsOn() const;
    /// The output with this name; an unconnected one when there is none.
    Monitor monitor(const std::string& name) const;
    ScreenSize screenSize() const { return readScreenSize(displayName_); }

    /// Another program at this server.
    OtherClient otherClient() const { return OtherClient(displayName_); }

    /// Kills the server and blocks until it is gone; its clients lose their connection.
    void kill();

private:
    void startServer(const Options& options);
    void endServer();
    void arrangeMonitors(int count) const;

    /// Ours until all else is gone.
    DisplayNumber number_;
    TemporaryFolder folder_;
    Janitor janitor_;
    std::string displayName_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<AccessibilityBus> bus_;
};

}  // namespace tavrel::support
