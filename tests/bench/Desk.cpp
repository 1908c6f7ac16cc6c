#include "tests/bench/Desk.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "tests/watchdog/Processes.h"

namespace tavrel::bench {

bool Program::isInstalled() const {
    if (command.find('/') != std::string::npos) {
        return ::access(command.c_str(), X_OK) == 0;
    }
    const char* path = std::getenv("PATH");
    std::istringstream folders(path != nullptr ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (::access((folder + "/" + command).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

Desk::Desk() = default;

std::unique_ptr<support::AppProcess> Desk::start(const Program& program,
                                                 const support::UserHome& home,
                                                 const support::Environment& environment) const {
    support::Environment whole = environment;
    whole.emplace("DBUS_SESSION_BUS_ADDRESS", bus_.address());
    whole.emplace("GSETTINGS_BACKEND", "memory");
    return std::make_unique<support::AppProcess>(
        desktop_, home,
        support::AppProcess::Options{.program = program.command, .environment = whole});
}

std::vector<pid_t> withHelper(pid_t application, const std::string& entry) {
    const std::vector<pid_t> helpers = watchdog::processesOf(TAVREL_WATCHDOG, entry);
    if (helpers.size() != 1) {
        throw std::runtime_error("there are " + std::to_string(helpers.size()) + " helpers");
    }
    return {application, helpers.front()};
}

}  // namespace tavrel::bench
