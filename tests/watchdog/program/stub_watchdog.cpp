#include <chrono>
#include <thread>

#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/program/WatchdogService.h"
#include "watchdog/protocol/MessageSocket.h"

/// A watchdog in a process of its own, for displays that are in a file.
int main() {
    using namespace tavrel::watchdog;
    SharedDisplays displays = SharedDisplays::ofEnvironment();
    MessageSocket application(tavrel::FileDescriptor(3));
    WatchdogService(displays, displays, application, [](auto time) {
        std::this_thread::sleep_for(time);
    }).run();
}
