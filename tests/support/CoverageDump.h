#pragma once

#if defined(TAVREL_COVERAGE)
#include <csignal>

extern "C" {
#include <gcov.h>
}
#endif

namespace tavrel {

/// For the child of a death test: a process that aborts would otherwise take the counts
/// of the lines it ran with it. Does nothing but in a build that counts them.
inline void keepCoverageOnAbort() {
#if defined(TAVREL_COVERAGE)
    std::signal(SIGABRT, [](int) { __gcov_dump(); });
#endif
}

}  // namespace tavrel
