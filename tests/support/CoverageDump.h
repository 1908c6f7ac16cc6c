#pragma once

#if defined(TAVREL_COVERAGE)
#include <csignal>

extern "C" {
#include <gcov.h>
}
#endif

namespace tavrel {

/// For the child of a death test: keeps the coverage of a process that aborts, which would
/// otherwise be lost. Does nothing in a build without coverage.
inline void keepCoverageOnAbort() {
#if defined(TAVREL_COVERAGE)
    std::signal(SIGABRT, [](int) { __gcov_dump(); });
#endif
}

}  // namespace tavrel
