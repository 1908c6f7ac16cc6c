#include "platform/macos/MacWindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

WindowServer makeWindowServer() {
    const auto windowServer = std::make_shared<MacWindowServer>();
    return {.displaySwitch = windowServer, .queries = windowServer};
}

}  // namespace tavrel::watchdog
