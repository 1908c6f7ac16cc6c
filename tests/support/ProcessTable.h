#pragma once

#include <sys/types.h>

#include <vector>

namespace tavrel::support {

/// A process as the kernel lists it.
struct ListedProcess {
    pid_t pid;
    pid_t parent;
    pid_t group;
};

/// All processes that run just now; ended ones that nobody has reaped do not.
std::vector<ListedProcess> runningProcesses();

/// The running process itself, what it started, what those started, and so on, and all
/// that is in its process group.
std::vector<pid_t> familyOf(pid_t process);

}  // namespace tavrel::support
