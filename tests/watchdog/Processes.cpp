#include "tests/watchdog/Processes.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <functional>

#include "tests/support/TemporaryFolder.h"

namespace tavrel::watchdog {
namespace {

using Path = std::filesystem::path;

bool isProcess(const std::string& name) {
    return std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isdigit(c); });
}

bool hasEntry(const Path& process, const std::string& entry) {
    std::ifstream file(process / "environ", std::ios::binary);
    for (std::string each; std::getline(file, each, '\0');) {
        if (each == entry) {
            return true;
        }
    }
    return false;
}

/// `isWanted` is asked about a process's folder under /proc. A process may be gone at any
/// step; then the step fails, and it is not running.
std::vector<pid_t> processesWith(const std::string& entry,
                                 const std::function<bool(const Path&)>& isWanted) {
    std::vector<pid_t> found;
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        const std::string name = process.path().filename().string();
        if (isProcess(name) && isWanted(process.path()) && hasEntry(process.path(), entry)) {
            found.push_back(std::stoi(name));
        }
    }
    return found;
}

}  // namespace

std::vector<pid_t> processesOf(const Path& executable, const std::string& entry) {
    const Path wanted = std::filesystem::weakly_canonical(executable);
    return processesWith(entry, [&](const Path& process) {
        std::error_code gone;
        return std::filesystem::read_symlink(process / "exe", gone) == wanted;
    });
}

std::vector<pid_t> processesNamed(const std::string& part, const std::string& entry) {
    return processesWith(entry, [&](const Path& process) {
        return support::readFile(process / "comm").find(part) != std::string::npos;
    });
}

}  // namespace tavrel::watchdog
