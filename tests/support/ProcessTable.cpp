#include "tests/support/ProcessTable.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/support/TemporaryFolder.h"

namespace tavrel::support {

std::vector<ListedProcess> runningProcesses() {
    std::vector<ListedProcess> running;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        pid_t pid = 0;
        const auto parsed = std::from_chars(name.data(), name.data() + name.size(), pid);
        // "123 (any name) S 1 123 …"; empty for a process that has ended meanwhile.
        const std::string stat =
            parsed.ptr == name.data() + name.size() ? readFile(entry.path() / "stat") : "";
        const auto nameEnd = stat.rfind(')');
        if (nameEnd == std::string::npos) {
            continue;
        }
        std::istringstream fields(stat.substr(nameEnd + 1));
        char state = 'Z';
        ListedProcess process{pid, 0, 0};
        fields >> state >> process.parent >> process.group;
        if (state != 'Z' && state != 'X') {
            running.push_back(process);
        }
    }
    return running;
}

std::vector<pid_t> processesWith(const std::string& entry) {
    std::vector<pid_t> found;
    for (const ListedProcess& each : runningProcesses()) {
        std::ifstream environment("/proc/" + std::to_string(each.pid) + "/environ",
                                  std::ios::binary);
        // None of a process that has ended meanwhile, or is another user's.
        for (std::string one; std::getline(environment, one, '\0');) {
            if (one == entry) {
                found.push_back(each.pid);
                break;
            }
        }
    }
    return found;
}

std::vector<pid_t> familyOf(pid_t process) {
    const std::vector<ListedProcess> running = runningProcesses();
    std::vector<pid_t> family{process};
    const auto isIn = [&](pid_t pid) {
        return std::find(family.begin(), family.end(), pid) != family.end();
    };
    for (bool grown = true; grown;) {
        grown = false;
        for (const ListedProcess& each : running) {
            if (!isIn(each.pid) && (each.group == process || isIn(each.parent))) {
                family.push_back(each.pid);
                grown = true;
            }
        }
    }
    const bool runs = std::any_of(running.begin(), running.end(),
                                  [&](const ListedProcess& each) { return each.pid == process; });
    if (!runs) {
        family.erase(family.begin());
    }
    return family;
}

}  // namespace tavrel::support
