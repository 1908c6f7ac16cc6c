#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <ostream>
#include <sstream>
#include <string>

namespace tavrel::e2e {

/// What a process holds at one moment, as Linux counts it.
struct ResourceUse {
    /// Memory of its own that it has written to, in KiB. Not what it has mapped from files: that
    /// counts as its own or as shared by who else runs the same program at the moment.
    long writtenMemory = 0;
    std::ptrdiff_t descriptors = 0;
    std::ptrdiff_t threads = 0;

    /// Of a process that has ended, all zeros.
    static ResourceUse of(pid_t process) {
        const std::filesystem::path folder = "/proc/" + std::to_string(process);
        return {.writtenMemory = writtenMemoryIn(folder / "smaps_rollup"),
                .descriptors = entriesOf(folder / "fd"),
                .threads = entriesOf(folder / "task")};
    }

private:
    static long writtenMemoryIn(const std::filesystem::path& rollup) {
        long kibibytes = 0;
        std::ifstream file(rollup);
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string name;
            long number = 0;
            if (words >> name >> number && name == "Private_Dirty:") {
                kibibytes += number;
            }
        }
        return kibibytes;
    }

    static std::ptrdiff_t entriesOf(const std::filesystem::path& folder) {
        std::error_code none;
        return std::distance(std::filesystem::directory_iterator(folder, none), {});
    }
};

inline std::ostream& operator<<(std::ostream& out, const ResourceUse& use) {
    return out << use.writtenMemory << " KiB, " << use.descriptors << " descriptors, "
               << use.threads << " threads";
}

}  // namespace tavrel::e2e
