#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <thread>

#include "guard/Lifecycle.h"
#include "guard/Surroundings.h"
#include "platform/guard/GuardService.h"
#include "platform/guard/MessageSocket.h"

int main(int argc, char** argv) {
    using namespace tavrel;
    const std::optional<int> inherited = guard::inheritedSocket({argv, static_cast<size_t>(argc)});
    if (!inherited) {
        std::cerr
            << "usage: tavrel-guard DESCRIPTOR (started by tavrel, with a connection to it)\n";
        return 2;
    }
    guard::MessageSocket application(guard::leaveSurroundings(*inherited));
    const std::shared_ptr<DisplaySwitch> displays = guard::makeLifecycle();
    guard::GuardService(*displays, application, [](std::chrono::milliseconds time) {
        std::this_thread::sleep_for(time);
    }).run();
    return EXIT_SUCCESS;
}
