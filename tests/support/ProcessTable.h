#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tavrel::support {

/// A process as the kernel lists it.
struct ListedProcess {
    pid_t pid;
    pid_t parent;
    pid_t group;
};

/// All processes that run now, without ended ones that have not been reaped.
std::vector<ListedProcess> runningProcesses();

/// Those that were started with this entry, as in "DISPLAY=:7", in their environment.
std::vector<pid_t> processesWith(const std::string& entry);

/// The process itself if it runs, its descendants, and all of its process group.
std::vector<pid_t> familyOf(pid_t process);

}  // namespace tavrel::support
