#include "platform/posix/BufferedUserDefaults.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/x11/X11WindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

namespace {

struct Parts {
    BufferedUserDefaults userDefaults{std::make_unique<FileUserDefaults>(defaultsPath())};
    X11WindowServer windowServer{userDefaults};
};

}  // namespace

WindowServer makeWindowServer() {
    const auto parts = std::make_shared<Parts>();
    const std::shared_ptr<X11WindowServer> windowServer(parts, &parts->windowServer);
    return {.displaySwitch = windowServer, .queries = windowServer};
}

}  // namespace tavrel::watchdog
