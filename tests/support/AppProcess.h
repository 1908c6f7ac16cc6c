#pragma once

#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

class VirtualDesktop;

/// A new, empty home folder: what the application keeps between runs. It is removed, and
/// programs that run in it end, also when this process dies.
class UserHome {
public:
    UserHome() = default;
    /// Ends whatever still runs in it: a watchdog whose application is gone would find its way
    /// to the next server with this display's number.
    ~UserHome();
    UserHome(const UserHome&) = delete;
    UserHome& operator=(const UserHome&) = delete;

    std::filesystem::path path() const { return folder_.path(); }
    std::filesystem::path configFolder() const { return folder_.path() / "config"; }
    /// The file behind the application's store.
    std::filesystem::path defaultsFile() const { return configFolder() / "tavrel/defaults.json"; }

    /// Replaces the content of the application's store.
    void plantDefaults(const std::string& text) const { writeFile(defaultsFile(), text); }

    Janitor& janitor() const { return janitor_; }

private:
    TemporaryFolder folder_;
    mutable Janitor janitor_{folder_.path()};
};

/// A graphical program running on a virtual desktop in its own environment. The destructor ends
/// it.
class AppProcess {
public:
    struct Options {
        std::string program;
        std::vector<std::string> arguments = {};
        /// Added to what the desktop and the home imply, or replacing it.
        Environment environment = {};
    };

    /// Throws std::runtime_error when it cannot be started. `home` must outlive it.
    AppProcess(const VirtualDesktop& desktop, const UserHome& home, const Options& options);
    /// Runs the program without an X server.
    AppProcess(const UserHome& home, const Options& options);
    ~AppProcess();
    AppProcess(const AppProcess&) = delete;
    AppProcess& operator=(const AppProcess&) = delete;

    ChildProcess& process() { return process_; }
    const ChildProcess& process() const { return process_; }
    pid_t pid() const { return process_.pid(); }

    std::string standardOutput() const { return readFile(output_ / "out"); }
    std::string standardError() const { return readFile(output_ / "err"); }

private:
    AppProcess(const VirtualDesktop* desktop, const UserHome& home, const Options& options);

    const UserHome& home_;
    std::filesystem::path output_;
    ChildProcess process_;
};

}  // namespace tavrel::support
