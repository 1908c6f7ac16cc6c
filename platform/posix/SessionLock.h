#pragma once

#include <filesystem>
#include <string>

#include "platform/posix/FileDescriptor.h"

namespace tavrel {

/// A lock that at most one process holds. The system lets go of it when that process ends,
/// however it ends: a file that was left behind locks nothing, nor does a child of that process.
/// It does so as well when the process closes the file elsewhere, so nothing else may open it.
class SessionLock {
public:
    /// Takes the lock if nobody has it. Does not wait.
    explicit SessionLock(const std::filesystem::path& file);

    /// False also when it cannot be found out, because there can be no such file.
    bool isHeldByAnother() const { return isHeldByAnother_; }

private:
    FileDescriptor file_;
    bool isHeldByAnother_ = false;
};

/// Where the lock of this user and session is: in the folder that XDG_RUNTIME_DIR names, or
/// else in a folder of this user's among the temporary files, which is made. A session is what
/// one display server shows. An empty path when there can be no such folder that is this user's
/// alone.
///
/// Reads the environment, so no other thread may be changing it.
std::filesystem::path sessionLockPath(const std::string& applicationId);

}  // namespace tavrel
