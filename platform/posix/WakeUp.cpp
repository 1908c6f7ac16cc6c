#include "platform/posix/WakeUp.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tavrel {

Pipe::Pipe() {
    std::array<int, 2> ends{};
#if defined(__APPLE__)
    // It has no way to make both at once; a program started in between would inherit them.
    const bool isMade = ::pipe(ends.data()) == 0;
#else
    const bool isMade = ::pipe2(ends.data(), O_CLOEXEC) == 0;
#endif
    if (!isMade) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    readEnd = FileDescriptor(ends[0]);
    writeEnd = FileDescriptor(ends[1]);
#if defined(__APPLE__)
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    }
#endif
}

WakeUp::WakeUp() {
    for (const int end : {pipe_.readEnd.number(), pipe_.writeEnd.number()}) {
        fcntl(end, F_SETFL, O_NONBLOCK);
    }
}

void WakeUp::wake() const {
    const int savedErrno = errno;
    const char byte = 0;
    // A full pipe is readable already. A signal never interrupts a write that cannot block.
    [[maybe_unused]] const auto written = write(pipe_.writeEnd.number(), &byte, 1);
    errno = savedErrno;
}

void WakeUp::drain() const {
    std::array<char, 256> bytes{};
    while (read(descriptor(), bytes.data(), bytes.size()) > 0) {
    }
}

}  // namespace tavrel
