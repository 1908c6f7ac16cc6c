#include "platform/posix/BrokenPipes.h"

#include <csignal>

namespace tavrel {

void ignoreBrokenPipes() {
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace tavrel
