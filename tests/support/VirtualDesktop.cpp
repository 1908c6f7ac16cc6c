#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <stdexcept>

#include "platform/posix/Process.h"
#include "platform/posix/WakeUp.h"
#include "tests/support/AccessibilityBus.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/DisplayNumber.h"

namespace tavrel::support {

namespace {

/// It names the driver and no device, so that the server touches no hardware, asks no system
/// service and starts as an ordinary user too. The screens never blank.
constexpr const char* configuration = R"(
Section "ServerFlags"
    Option "AutoAddDevices" "off"
    Option "AutoEnableDevices" "off"
    Option "AutoAddGPU" "off"
    Option "DontVTSwitch" "on"
    Option "BlankTime" "0"
    Option "StandbyTime" "0"
    Option "SuspendTime" "0"
    Option "OffTime" "0"
EndSection
Section "Module"
    Disable "glx"
EndSection
Section "Device"
    Identifier "card"
    Driver "dummy"
    VideoRam 131072
EndSection
Section "Monitor"
    Identifier "monitor"
    HorizSync 5-1000
    VertRefresh 5-200
EndSection
Section "Screen"
    Identifier "screen"
    Device "card"
    Monitor "monitor"
    DefaultDepth 24
    SubSection "Display"
        Depth 24
        Modes "1920x1080"
        Virtual 7680 4320
    EndSubSection
EndSection
)";

/// Debian's /usr/bin/Xorg may be a wrapper that refuses users without a console; the
/// server itself needs neither.
std::string serverProgram() {
    constexpr const char* unwrapped = "/usr/lib/xorg/Xorg";
    return std::filesystem::exists(unwrapped) ? unwrapped : "Xorg";
}

}  // namespace

VirtualDesktop::VirtualDesktop(const Options& options) : janitor_(folder_.path()) {
    // Who talks to this server here outlives it at times.
    ignoreBrokenPipes();
    // Somebody else's server may have the number.
    constexpr int attempts = 3;
    for (int attempt = 1; displayName_.empty(); ++attempt) {
        try {
            startServer(options);
        } catch (const std::runtime_error&) {
            if (attempt == attempts) {
                throw;
            }
            number_ = DisplayNumber();
        }
    }
    if (options.randr) {
        arrangeMonitors(options.monitors);
    }
    if (options.accessibility) {
        bus_ = std::make_unique<AccessibilityBus>(folder_.path(), displayName_, janitor_);
    }
}

VirtualDesktop::~VirtualDesktop() {
    bus_.reset();
    // Asked to end, the server removes its own files.
    server_.reset();
}

void VirtualDesktop::startServer(const Options& options) {
    const auto config = folder_.path() / "xorg.conf";
    const auto noFurtherConfig = folder_.path() / "xorg.conf.d";
    writeFile(config, configuration);
    std::filesystem::create_directories(noFurtherConfig);

    Pipe ready;
    ChildProcess::Options server;
    server.command = {serverProgram(), number_.name(),
                      "-displayfd",    "3",
                      "-config",       config.string(),
                      "-configdir",    noFurtherConfig.string(),
                      "-logfile",      (folder_.path() / "xorg.log").string(),
                      "-noreset",      "-nolisten",
                      "tcp",           "-novtswitch",
                      "-sharevts"};
    if (!options.randr) {
        server.command.insert(server.command.end(), {"-extension", "RANDR"});
    }
    server.command.insert(server.command.end(), options.serverArguments.begin(),
                          options.serverArguments.end());
    server.standardError = folder_.path() / "xorg.err";
    server.descriptorThree = ready.writeEnd.number();
    server_ = std::make_unique<ChildProcess>(server);
    janitor_.watchGroup(server_->pid());
    ready.writeEnd.close();

    if (readDisplayNumber(ready.readEnd) != number_.value()) {
        endServer();
        throw std::runtime_error("the X server did not come up:\n" +
                                 readFile(folder_.path() / "xorg.err"));
    }
    janitor_.watchDisplay(number_.value());
    displayName_ = number_.name();
}

void VirtualDesktop::arrangeMonitors(int count) const {
    const OtherClient client = otherClient();
    std::vector<std::string> layout{"--output", "DUMMY0", "--mode",   "1920x1080",
                                    "--pos",    "0x0",    "--primary"};
    for (int i = 1; i < count; ++i) {
        const std::string name = "DUMMY" + std::to_string(i);
        client.run({"--addmode", name, "1920x1080"});
        layout.insert(layout.end(), {"--output", name, "--mode", "1920x1080", "--pos",
                                     std::to_string(1920 * i) + "x0"});
    }
    client.run(std::move(layout));
    // An output counts as connected once it has shown something and the server has looked.
    client.run({"--query"});
}

std::string VirtualDesktop::sessionBusAddress() const {
    return bus_ ? bus_->sessionAddress() : "";
}

std::string VirtualDesktop::accessibilityBusAddress() const {
    return bus_ ? bus_->accessibilityAddress() : "";
}

int VirtualDesktop::monitorsOn() const {
    const std::vector<Monitor> all = monitors();
    return static_cast<int>(
        std::count_if(all.begin(), all.end(), [](const Monitor& each) { return each.on; }));
}

Monitor VirtualDesktop::monitor(const std::string& name) const {
    const std::vector<Monitor> all = monitors();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Monitor& each) { return each.name == name; });
    Monitor missing;
    missing.name = name;
    return found == all.end() ? missing : *found;
}

std::vector<Monitor> VirtualDesktop::monitors() const {
    if (server_ == nullptr) {
        throw std::runtime_error("the X server has been killed");
    }
    return readMonitors(displayName_);
}

void VirtualDesktop::endServer() {
    const pid_t server = server_->pid();
    server_.reset();
    janitor_.forgetGroup(server);
}

void VirtualDesktop::kill() {
    if (server_ == nullptr) {
        return;
    }
    server_->signal(SIGKILL);
    endServer();
    removeDisplayFiles(number_.value());
}

}  // namespace tavrel::support
