#include "tests/support/AppProcess.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "tests/support/ProcessTable.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

/// Each run has its own folder for its output, because several may share a home.
std::filesystem::path newOutputFolder(const UserHome& home) {
    std::string pattern = (home.path() / "output-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
        throw std::system_error(errno, std::generic_category(), "mkdtemp " + pattern);
    }
    return pattern;
}

Environment environmentOn(const VirtualDesktop* desktop, const UserHome& home) {
    const auto runtime = home.path() / "runtime";
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);

    Environment environment = bareEnvironment();
    environment["HOME"] = home.path().string();
    environment["XDG_CONFIG_HOME"] = home.configFolder().string();
    environment["XDG_CACHE_HOME"] = (home.path() / "cache").string();
    environment["XDG_RUNTIME_DIR"] = runtime.string();
    // An address that cannot be reached: without one, the program would look for a bus.
    const std::string noBus = "unix:path=" + (runtime / "no-bus").string();
    environment["DBUS_SESSION_BUS_ADDRESS"] = noBus;
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = noBus;
    environment["QT_QPA_PLATFORM"] = "xcb";
    if (desktop != nullptr) {
        environment["DISPLAY"] = desktop->displayName();
        if (!desktop->sessionBusAddress().empty()) {
            environment["DBUS_SESSION_BUS_ADDRESS"] = desktop->sessionBusAddress();
            environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1";
        }
    }
    return environment;
}

ChildProcess::Options processOptions(const VirtualDesktop* desktop, const UserHome& home,
                                     const AppProcess::Options& options,
                                     const std::filesystem::path& output) {
    ChildProcess::Options process;
    process.command = options.arguments;
    process.command.insert(process.command.begin(), options.program);
    process.environment = environmentOn(desktop, home);
    for (const auto& [name, value] : options.environment) {
        process.environment[name] = value;
    }
    process.standardOutput = output / "out";
    process.standardError = output / "err";
    return process;
}

}  // namespace

UserHome::~UserHome() {
    const std::string entry = "HOME=" + path().string();
    waitUntil([&] {
        const std::vector<pid_t> left = processesWith(entry);
        for (const pid_t each : left) {
            ::kill(each, SIGKILL);
        }
        return left.empty();
    });
}

AppProcess::AppProcess(const VirtualDesktop& desktop, const UserHome& home, const Options& options)
    : AppProcess(&desktop, home, options) {}

AppProcess::AppProcess(const UserHome& home, const Options& options)
    : AppProcess(nullptr, home, options) {}

AppProcess::AppProcess(const VirtualDesktop* desktop, const UserHome& home, const Options& options)
    : home_(home),
      output_(newOutputFolder(home)),
      process_(processOptions(desktop, home, options, output_)) {
    home.janitor().watchGroup(process_.pid());
}

AppProcess::~AppProcess() {
    process_.stop();
    home_.janitor().forgetGroup(process_.pid());
}

}  // namespace tavrel::support
