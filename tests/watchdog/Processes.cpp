#include "tests/watchdog/Processes.h"

#include <functional>

#include "tests/support/ProcessTable.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::watchdog {
namespace {

using Path = std::filesystem::path;

/// `isWanted` is asked about a process's folder under /proc. A process may be gone at any
/// step; then the step fails, and it is not running.
std::vector<pid_t> processesWith(const std::string& entry,
                                 const std::function<bool(const Path&)>& isWanted) {
    std::vector<pid_t> found = support::processesWith(entry);
    std::erase_if(found,
                  [&](pid_t each) { return !isWanted(Path("/proc") / std::to_string(each)); });
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
