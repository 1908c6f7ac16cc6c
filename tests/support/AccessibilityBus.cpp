#include "tests/support/AccessibilityBus.h"

#include <stdexcept>

#include "tests/support/DBus.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

namespace {

std::string launcherProgram() {
    for (const char* path :
         {"/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error("at-spi-bus-launcher is not installed (package at-spi2-core)");
}

ChildProcess::Options launcherOptions(const std::filesystem::path& folder,
                                      const std::string& displayName,
                                      const std::string& sessionAddress) {
    const auto runtime = folder / "runtime";
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    ChildProcess::Options options;
    options.command = {launcherProgram(), "--launch-immediately", "--a11y=1"};
    if (!displayName.empty()) {
        options.environment["DISPLAY"] = displayName;
    }
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = sessionAddress;
    options.environment["HOME"] = folder.string();
    options.environment["XDG_RUNTIME_DIR"] = runtime.string();
    // Not the user's settings, and not a bus that needs systemd.
    options.environment["GSETTINGS_BACKEND"] = "memory";
    options.environment["ATSPI_DBUS_IMPLEMENTATION"] = "dbus-daemon";
    options.standardError = folder / "accessibility.err";
    return options;
}

/// The address of the accessibility bus; empty while the session does not know it.
std::string askForAccessibilityBus(const std::string& sessionAddress) {
    try {
        const DBus session(sessionAddress);
        const Variant answer =
            session.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress");
        const char* address = nullptr;
        g_variant_get(answer.get(), "(&s)", &address);
        return address;
    } catch (const DBusError&) {
        return {};
    }
}

}  // namespace

AccessibilityBus::AccessibilityBus(const std::filesystem::path& folder,
                                   const std::string& displayName, Janitor& janitor)
    : session_(std::in_place, folder, "session", janitor),
      sessionAddress_(session_->address()),
      launcher_(launcherOptions(folder, displayName, sessionAddress_)) {
    janitor.watchGroup(launcher_.pid());
    awaitAddress(folder);
}

AccessibilityBus::AccessibilityBus(const std::filesystem::path& folder,
                                   const std::string& displayName,
                                   const std::string& sessionAddress, Janitor& janitor)
    : sessionAddress_(sessionAddress),
      launcher_(launcherOptions(folder, displayName, sessionAddress_)) {
    janitor.watchGroup(launcher_.pid());
    awaitAddress(folder);
}

void AccessibilityBus::awaitAddress(const std::filesystem::path& folder) {
    const bool answered = waitUntil([&] {
        accessibilityAddress_ = askForAccessibilityBus(sessionAddress_);
        return !accessibilityAddress_.empty();
    });
    if (!answered) {
        throw std::runtime_error("no accessibility bus:\n" + readFile(folder / "session.err") +
                                 readFile(folder / "accessibility.err"));
    }
}

}  // namespace tavrel::support
