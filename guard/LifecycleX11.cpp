#include "guard/Lifecycle.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/x11/X11WindowServer.h"

namespace tavrel::guard {

namespace {

struct Parts {
    FileUserDefaults userDefaults{defaultsPath()};
    X11WindowServer windowServer{userDefaults};
};

}  // namespace

std::shared_ptr<DisplaySwitch> makeLifecycle() {
    const auto parts = std::make_shared<Parts>();
    return {parts, &parts->windowServer};
}

}  // namespace tavrel::guard
