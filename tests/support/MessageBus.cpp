#include "tests/support/MessageBus.h"

#include <stdexcept>

#include "tests/support/DBus.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

namespace {

/// A session without the services of this computer, so that it starts none of its programs.
std::string configuration(const std::string& address, const std::filesystem::path& services) {
    const std::string serviceFolder =
        services.empty() ? "" : "<servicedir>" + services.string() + "</servicedir>\n";
    return "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\""
           " \"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">\n"
           "<busconfig>\n"
           "<type>session</type>\n"
           "<listen>" +
           address + "</listen>\n" + serviceFolder +
           "<auth>EXTERNAL</auth>\n"
           "<policy context=\"default\">\n"
           "<allow send_destination=\"*\" eavesdrop=\"true\"/>\n"
           "<allow eavesdrop=\"true\"/>\n"
           "<allow own=\"*\"/>\n"
           "</policy>\n"
           "</busconfig>\n";
}

ChildProcess::Options daemonOptions(const std::filesystem::path& folder, const std::string& name,
                                    const std::string& address, const MessageBus::Options& bus) {
    const auto file = folder / (name + ".conf");
    writeFile(file, configuration(address, bus.services));
    ChildProcess::Options options;
    options.environment = bus.environment;
    options.command = {"dbus-daemon", "--nofork", "--config-file=" + file.string()};
    options.standardError = folder / (name + ".err");
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

}  // namespace

MessageBus::MessageBus(const std::filesystem::path& folder, const std::string& name,
                       Janitor& janitor, const Options& options)
    : address_("unix:path=" + (folder / name).string()),
      daemon_(daemonOptions(folder, name, address_, options)) {
    janitor.watchGroup(daemon_.pid());
    if (!waitUntil([&] { return answers(address_); })) {
        throw std::runtime_error("no message bus:\n" + readFile(folder / (name + ".err")));
    }
}

}  // namespace tavrel::support
