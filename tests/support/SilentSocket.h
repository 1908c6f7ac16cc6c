#pragma once

#include <filesystem>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::support {

/// A service that hangs: its socket takes clients in and never says a word to them.
class SilentSocket {
public:
    /// Throws std::system_error when there can be no socket at `path`.
    explicit SilentSocket(const std::filesystem::path& path);

    /// Blocks until a client has come.
    void awaitClient();

private:
    FileDescriptor listening_;
    FileDescriptor client_;
};

}  // namespace tavrel::support
