#pragma once

#include <optional>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/Janitor.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

class VirtualDesktop;

/// A user's home folder, fresh and empty: what the application keeps between runs. It is
/// removed, and what runs in it ends, also when this process dies.
class UserHome {
public:
    std::filesystem::path path() const { return folder_.path(); }
    std::filesystem::path configFolder() const { return folder_.path() / "config"; }
    /// The file behind the application's store.
    std::filesystem::path defaultsFile() const { return configFolder() / "tavrel/defaults.json"; }

    /// Makes this text, whole, the application's store.
    void plantDefaults(const std::string& text) const { writeFile(defaultsFile(), text); }

    Janitor& janitor() const { return janitor_; }

private:
    TemporaryFolder folder_;
    mutable Janitor janitor_{folder_.path()};
};

/// A graphical program running on a virtual desktop in an environment of its own. Ends
/// with this object at the latest.
class AppProcess {
public:
    struct Options {
        std::string program;
        std::vector<std::string> arguments = {};
        /// Added to, or put in place of, what the desktop and the home imply.
        Environment environment = {};
    };

    /// Throws std::runtime_error when it cannot be started. `home` must outlive it.
    AppProcess(const VirtualDesktop& desktop, const UserHome& home, const Options& options);
    /// Without any X server to open its window on.
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
