#include "tests/watchdog/Processes.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>

namespace tavrel::watchdog {
namespace {

bool hasEntry(const std::filesystem::path& process, const std::string& entry) {
    std::ifstream file(process / "environ", std::ios::binary);
    for (std::string each; std::getline(file, each, '\0');) {
        if (each == entry) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::vector<pid_t> processesOf(const std::filesystem::path& executable, const std::string& entry) {
    std::vector<pid_t> found;
    // A process may be gone at any step; then the step fails and it is no longer running.
    std::error_code gone;
    const std::filesystem::path wanted = std::filesystem::canonical(executable);
    for (const auto& process : std::filesystem::directory_iterator("/proc")) {
        const std::string name = process.path().filename().string();
        if (std::all_of(name.begin(), name.end(),
                        [](unsigned char c) { return std::isdigit(c); }) &&
            std::filesystem::read_symlink(process.path() / "exe", gone) == wanted &&
            hasEntry(process.path(), entry)) {
            found.push_back(std::stoi(name));
        }
    }
    return found;
}

}  // namespace tavrel::watchdog
