#pragma once

#include <sys/types.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <ostream>
#include <string>

#include "tests/support/NumberIn.h"

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
        return static_cast<long>(support::numberIn(rollup, "Private_Dirty"));
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
