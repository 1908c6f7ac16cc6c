#pragma once

#include <unistd.h>

#include <utility>

namespace tavrel {

/// An open file, closed at the end. May hold none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    /// Takes over `number` as the system's calls return it: negative is none.
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
