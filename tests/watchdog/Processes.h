#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavrel::watchdog {

/// The running processes of `executable` that were started with this entry, as in
/// "DISPLAY=:7", in their environment; those of other tests have another. Ended ones that
/// nobody has reaped are not running.
std::vector<pid_t> processesOf(const std::filesystem::path& executable, const std::string& entry);

/// Likewise those whose name, as the kernel keeps it and `pkill` matches it, contains `part`.
std::vector<pid_t> processesNamed(const std::string& part, const std::string& entry);

}  // namespace tavrel::watchdog
