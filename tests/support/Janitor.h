#pragma once

#include <sys/types.h>

#include <filesystem>
#include <span>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::support {

/// A small process that cleans up when this one dies without doing so (a crash, SIGKILL, the
/// timeout of a test runner).
///
/// It keeps nothing open but its end of a pipe, so no test runner waits for it.
class Janitor {
public:
    /// From now on, removes `folder` when this process dies. Throws std::system_error.
    explicit Janitor(const std::filesystem::path& folder);
    /// Ends it: this process has cleaned up itself.
    ~Janitor();
    Janitor(const Janitor&) = delete;
    Janitor& operator=(const Janitor&) = delete;

    /// From now on, also ends the process group of this leader.
    void watchGroup(pid_t leader);
    /// The group has ended: its number may be used again.
    void forgetGroup(pid_t leader);
    /// From now on, also removes the files of the X server with this number.
    void watchDisplay(int number);

private:
    struct Message;
    static std::size_t forget(std::span<Message> entrusted, std::size_t count, pid_t leader);
    [[noreturn]] static void serve(int pipe, const char* folder);
    void tell(const Message& message);

    FileDescriptor pipe_;
    pid_t pid_ = -1;
};

/// Removes the socket of a display if no server listens there. Async-signal-safe.
void removeDisplayFiles(int displayNumber);

}  // namespace tavrel::support
