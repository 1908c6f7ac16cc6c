#include "tests/simulation/OneProcessor.h"

#ifdef __linux__
#include <sched.h>
#include <unistd.h>

#include <cstddef>
#endif

namespace tavrel::simulation {

#ifdef __linux__

void stayOnOneProcessor(unsigned job) {
    cpu_set_t allowed;
    if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) {
        return;
    }
    // Several programs at a time should not all begin with the same one.
    const unsigned number = static_cast<unsigned>(getpid()) + job;
    int toSkip = static_cast<int>(number % static_cast<unsigned>(CPU_COUNT(&allowed)));
    for (std::size_t processor = 0; processor < CPU_SETSIZE; ++processor) {
        if (CPU_ISSET(processor, &allowed) && toSkip-- == 0) {
            cpu_set_t one;
            CPU_ZERO(&one);
            CPU_SET(processor, &one);
            sched_setaffinity(0, sizeof one, &one);
            return;
        }
    }
}

#else

void stayOnOneProcessor(unsigned) {}

#endif

}  // namespace tavrel::simulation
