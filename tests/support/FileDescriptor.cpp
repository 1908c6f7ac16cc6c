#include "tests/support/FileDescriptor.h"

#include <fcntl.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tavrel::support {

Pipe::Pipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe2");
    }
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
}

}  // namespace tavrel::support
