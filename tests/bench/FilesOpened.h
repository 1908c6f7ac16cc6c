#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

namespace tavrel::bench {

/// Counts the files that running programs open from now on, by means of strace, which holds them
/// up a little.
class FilesOpened {
public:
    /// Blocks until strace watches all of them. Throws std::runtime_error when it may not.
    explicit FilesOpened(const std::vector<pid_t>& processes);

    /// Ends the watch.
    long count();

private:
    support::TemporaryFolder folder_;
    std::unique_ptr<support::ChildProcess> strace_;
};

}  // namespace tavrel::bench
