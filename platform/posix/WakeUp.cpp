#include "platform/posix/WakeUp.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace tavrel {

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
