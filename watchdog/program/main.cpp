#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <thread>

#include "platform/posix/Process.h"
#include "watchdog/program/ProcessSetup.h"
#include "watchdog/program/WatchdogService.h"
#include "watchdog/program/WindowServer.h"
#include "watchdog/protocol/MessageSocket.h"

int main(int argc, char** argv) {
    using namespace tavrel;
    const std::optional<int> inherited =
        watchdog::inheritedSocket({argv, static_cast<size_t>(argc)});
    if (!inherited) {
        std::cerr
            << "usage: display-watchdog DESCRIPTOR [WINDOW-SERVER] (started by tavrel, with a "
               "connection to it)\n";
        return 2;
    }
    shareOneHeap();
    watchdog::MessageSocket application(watchdog::detachProcess(*inherited));
    const watchdog::WindowServer server = watchdog::makeWindowServer(argc > 2 ? argv[2] : "");
    watchdog::WatchdogService(
        *server.displaySwitch, *server.queries, application,
        [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); })
        .run();
    return EXIT_SUCCESS;
}
