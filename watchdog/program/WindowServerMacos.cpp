#include "platform/macos/MacWindowServer.h"
#include "watchdog/program/WindowServer.h"

namespace tavrel::watchdog {

WindowServer makeWindowServer(std::string_view /*name*/) {
    const auto windowServer = std::make_shared<MacWindowServer>();
    return {.displaySwitch = windowServer, .queries = windowServer};
}

}  // namespace tavrel::watchdog
