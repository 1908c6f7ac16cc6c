#include "platform/macos/MacWindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

std::shared_ptr<DisplaySwitch> makeDisplaySwitch() {
    return std::make_shared<MacWindowServer>();
}

}  // namespace tavrel::watchdog
