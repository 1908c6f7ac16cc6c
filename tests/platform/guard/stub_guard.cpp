#include <chrono>
#include <thread>

#include "platform/guard/GuardService.h"
#include "platform/guard/MessageSocket.h"
#include "tests/platform/guard/SharedDisplays.h"

/// A guard in a process of its own, for displays that are in a file.
int main() {
    using namespace tavrel::guard;
    SharedDisplays displays = SharedDisplays::ofEnvironment();
    MessageSocket application(tavrel::FileDescriptor(3));
    GuardService(displays, application, [](auto time) { std::this_thread::sleep_for(time); }).run();
}
