#pragma once

#include <unistd.h>

#include <utility>

namespace tavrel {

/// Owns a file descriptor and closes it; may be empty.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes ownership of `number`, a system call's result: empty when that is negative.
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        FileDescriptor moved(std::move(other));
        std::swap(number_, moved.number_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    void close() {
        if (isOpen()) {
            ::close(std::exchange(number_, -1));
        }
    }

private:
    int number_ = -1;
};

}  // namespace tavrel
