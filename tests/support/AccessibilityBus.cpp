#include "tests/support/AccessibilityBus.h"

#include <stdexcept>

#include "tests/support/DBus.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

namespace {

/// A session without activatable services, so that it starts no other program.
std::string sessionConfiguration(const std::filesystem::path& socket) {
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "<type>session</type>\n"
           "<listen>unix:path=" +
           socket.string() +
           "</listen>\n"
           "<auth>EXTERNAL</auth>\n"
           "<policy context=\"default\">\n"
           "<allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
           "<allow eavesdrop=\"true\"/>\n"
           "<allow own=\"*\"/>\n"
           "</policy>\n"
           "</busconfig>\n";
}

std::string launcherProgram() {
    for (const char* path :
         {"/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher"}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error("at-spi-bus-launcher is not installed (package at-spi2-core)");
}

ChildProcess::Options sessionOptions(const std::filesystem::path& folder) {
    const auto config = folder / "session.conf";
    writeFile(config, sessionConfiguration(folder / "session"));
    ChildProcess::Options options;
    options.command = {"dbus-daemon", "--nofork", "--config-file=" + config.string()};
    options.standardError = folder / "session.err";
    return options;
}

ChildProcess::Options launcherOptions(const std::filesystem::path& folder,
                                      const std::string& displayName,
                                      const std::string& sessionAddress) {
    const auto runtime = folder / "runtime";
    std::filesystem::create_directories(runtime);
    std::filesystem::permissions(runtime, std::filesystem::perms::owner_all);
    ChildProcess::Options options;
    options.command = {launcherProgram(), "--launch-immediately", "--a11y=1"};
    options.environment["DISPLAY"] = displayName;
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = sessionAddress;
    options.environment["HOME"] = folder.string();
    options.environment["XDG_RUNTIME_DIR"] = runtime.string();
    // Not the user's settings, and not a bus that needs systemd.
    options.environment["GSETTINGS_BACKEND"] = "memory";
    options.environment["ATSPI_DBUS_IMPLEMENTATION"] = "dbus-daemon";
    options.standardError = folder / "accessibility.err";
    return options;
}

bool answers(const std::string& address) {
    try {
        const DBus bus(address);
        return true;
    } catch (const DBusError&) {
        return false;
    }
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
    : sessionAddress_("unix:path=" + (folder / "session").string()),
      session_(sessionOptions(folder)) {
    janitor.watchGroup(session_.pid());
    const bool listening = waitUntil([&] { return answers(sessionAddress_); });
    launcher_.emplace(launcherOptions(folder, displayName, sessionAddress_));
    janitor.watchGroup(launcher_->pid());
    const bool answered = listening && waitUntil([&] {
                              accessibilityAddress_ = askForAccessibilityBus(sessionAddress_);
                              return !accessibilityAddress_.empty();
                          });
    if (!answered) {
        throw std::runtime_error("no accessibility bus:\n" + readFile(folder / "session.err") +
                                 readFile(folder / "accessibility.err"));
    }
}

}  // namespace tavrel::support
