#include "tests/support/Xwayland.h"

#include <optional>
#include <stdexcept>

#include "platform/posix/WakeUp.h"
#include "tests/support/DisplayNumber.h"

namespace tavrel::support {

namespace {
constexpr const char* installed = "/usr/bin/Xwayland";
}  // namespace

bool Xwayland::isInstalled() {
    return std::filesystem::exists(installed);
}

Xwayland::Xwayland(const std::string& waylandDisplay) {
    Pipe number;
    ChildProcess::Options options;
    // Without a root window of its own, as desktops start it.
    options.command = {installed, "-rootless", "-displayfd", "3", "-noreset", "-nolisten", "tcp"};
    options.environment["WAYLAND_DISPLAY"] = waylandDisplay;
    options.environment["XDG_RUNTIME_DIR"] = folder_.path().string();
    options.standardError = folder_.path() / "xwayland.err";
    options.descriptorThree = number.writeEnd.number();
    server_ = std::make_unique<ChildProcess>(options);
    janitor_.watchGroup(server_->pid());
    number.writeEnd.close();

    const std::optional<int> display = readDisplayNumber(number.readEnd);
    if (!display.has_value()) {
        server_.reset();
        throw std::runtime_error("Xwayland did not come up:\n" +
                                 readFile(folder_.path() / "xwayland.err"));
    }
    janitor_.watchDisplay(*display);
    displayName_ = ":" + std::to_string(*display);
}

}  // namespace tavrel::support
