#pragma once

#include <sys/types.h>

#include <filesystem>
#include <span>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::support {

/// A small process that outlives this one if this one dies without cleaning up (a crash, a
/// SIGKILL, a test runner's time limit) and then ends what was entrusted to it.
///
/// It holds nothing open but its end of a pipe, so it keeps no test runner waiting.
class Janitor {
public:
    /// From now on `folder` is removed should this process die. Throws std::system_error.
    explicit Janitor(const std::filesystem::path& folder);
    /// Dismisses it: whoever made it has cleaned up.
    ~Janitor();
    Janitor(const Janitor&) = delete;
    Janitor& operator=(const Janitor&) = delete;

    /// Also end the process group that this process leads.
    void watchGroup(pid_t leader);
    /// The group has ended and its number may become somebody else's.
    void forgetGroup(pid_t leader);
    /// Also remove what the X server with this number leaves behind when it is killed.
    void watchDisplay(int number);

private:
    struct Message;
    static std::size_t forget(std::span<Message> entrusted, std::size_t count, pid_t leader);
    [[noreturn]] static void serve(int pipe, const char* folder);
    void tell(const Message& message);

    FileDescriptor pipe_;
    pid_t pid_ = -1;
};

/// Removes the socket of a display if no server listens there any more. Async-signal-safe.
void removeDisplayFiles(int displayNumber);

}  // namespace tavrel::support
