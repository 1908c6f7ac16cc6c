#include <csignal>
#include <cstdlib>
#include <ext/stdio_filebuf.h>
#include <istream>
#include <string>
#include <vector>

#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/application/GuardedSwitch.h"
#include "watchdog/application/WatchdogProcess.h"

/// An application that does as it is told on descriptor 3, line by line, and answers each
/// line with a status: `off N`, `on N`, `goodbye`, `abort`, `segv`. Ends with its input.
int main(int argc, char** argv) {
    using namespace tavrel::watchdog;
    if (argc != 2) {
        return 2;
    }
    SharedDisplays displays = SharedDisplays::ofEnvironment();
    GuardedSwitch guarded(displays, displays,
                          {.startWatchdog = [&](const std::vector<Message>& first) {
                              return WatchdogProcess::start(argv[1], first);
                          }});
    __gnu_cxx::stdio_filebuf<char> input(3, std::ios::in);
    __gnu_cxx::stdio_filebuf<char> output(3, std::ios::out);
    std::istream orders(&input);
    std::ostream answers(&output);
    std::string verb;
    while (orders >> verb) {
        tavrel::ServerStatus status = 0;
        if (verb == "goodbye") {
            guarded.goodbye();
        } else if (verb == "abort") {
            std::abort();
        } else if (verb == "segv") {
            std::raise(SIGSEGV);
        } else {
            tavrel::DisplayID display = 0;
            orders >> display;
            status = guarded.setDisplayEnabled(display, verb == "on");
        }
        answers << status << std::endl;
    }
}
