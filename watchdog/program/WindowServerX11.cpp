#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/x11/X11WindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

namespace {

struct Parts {
    FileUserDefaults userDefaults{defaultsPath()};
    X11WindowServer windowServer{userDefaults};
};

}  // namespace

std::shared_ptr<DisplaySwitch> makeDisplaySwitch() {
    const auto parts = std::make_shared<Parts>();
    return {parts, &parts->windowServer};
}

}  // namespace tavrel::watchdog
