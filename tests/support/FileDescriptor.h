#pragma once

#include <unistd.h>

#include <utility>

namespace tavrel::support {

/// Owns an open file descriptor, or none (-1).
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int fd) : fd_(fd) {}
    FileDescriptor(FileDescriptor&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { close(); }

    int get() const { return fd_; }
    void close() {
        if (fd_ >= 0) {
            ::close(std::exchange(fd_, -1));
        }
    }

private:
    int fd_ = -1;
};

/// Both ends of a pipe that no started program inherits. Throws std::system_error.
struct Pipe {
    Pipe();
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

}  // namespace tavrel::support
