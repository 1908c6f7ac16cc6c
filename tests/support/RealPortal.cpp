#include "tests/support/RealPortal.h"

#include <filesystem>
#include <stdexcept>

#include "tests/support/ShortcutsBackend.h"

namespace tavrel::support {

namespace {

std::string program() {
    for (const char* path :
         {"/usr/libexec/xdg-desktop-portal", "/usr/lib/xdg-desktop-portal/xdg-desktop-portal"}) {
        if (std::filesystem::exists(path)) {
            return path;
        }
    }
    throw std::runtime_error("xdg-desktop-portal is not installed");
}

}  // namespace

RealPortal::RealPortal(const std::string& busAddress) {
    // Where the one or the other version looks for what is behind it.
    writeFile(folder_.path() / "portals/stub.portal",
              std::string("[portal]\nDBusName=") + ShortcutsBackend::name +
                  "\nInterfaces=" + ShortcutsBackend::interface + ";\nUseIn=stub\n");
    writeFile(folder_.path() / "portals/portals.conf", "[preferred]\ndefault=stub\n");
    writeFile(folder_.path() / "config/xdg-desktop-portal/portals.conf",
              "[preferred]\ndefault=stub\n");

    ChildProcess::Options options;
    options.command = {program()};
    options.environment["DBUS_SESSION_BUS_ADDRESS"] = busAddress;
    options.environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=/nowhere";
    options.environment["XDG_DESKTOP_PORTAL_DIR"] = folder_.path() / "portals";
    options.environment["XDG_CURRENT_DESKTOP"] = "stub";
    options.environment["XDG_CONFIG_HOME"] = folder_.path() / "config";
    options.environment["XDG_RUNTIME_DIR"] = folder_.path();
    options.environment["HOME"] = folder_.path();
    options.environment["GSETTINGS_BACKEND"] = "memory";
    options.standardError = folder_.path() / "portal.err";
    process_ = std::make_unique<ChildProcess>(options);
    janitor_.watchGroup(process_->pid());
}

std::string RealPortal::complaints() const {
    return readFile(folder_.path() / "portal.err");
}

}  // namespace tavrel::support
