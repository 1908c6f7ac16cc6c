#pragma once

#include <map>
#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/GnomeDesktop.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

/// Monitors that are plugged in at a GNOME compositor while it runs, and pulled out again: for
/// whoever records one over PipeWire, it has a monitor more. Leaves nothing behind, also when this
/// process dies. Use it on the thread that created it.
class PluggedMonitors {
public:
    /// Whether there is a PipeWire.
    static bool isInstalled();

    /// `program` is the built tavrel_virtual_monitor; `desktop` must outlive this. Throws
    /// std::runtime_error when PipeWire does not come up.
    PluggedMonitors(const GnomeDesktop& desktop, std::string program);
    PluggedMonitors(const PluggedMonitors&) = delete;
    PluggedMonitors& operator=(const PluggedMonitors&) = delete;

    /// Blocks until the compositor lists it; returns at which connector. Each is of the same make,
    /// with a serial number of its own. Throws std::runtime_error when it does not come.
    std::string plug(int width, int height);
    /// Blocks until the compositor lists it no more.
    void unplug(const std::string& connector);

private:
    std::unique_ptr<ChildProcess> start(const std::vector<std::string>& command);
    std::string messages() const { return readFile(folder_.path() / "err"); }

    const GnomeDesktop& desktop_;
    const std::string program_;
    TemporaryFolder folder_;
    Janitor janitor_{folder_.path()};
    std::unique_ptr<ChildProcess> pipeWire_;
    std::map<std::string, std::unique_ptr<ChildProcess>> monitors_;
};

}  // namespace tavrel::support
