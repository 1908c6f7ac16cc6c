#pragma once

#include <cstddef>

namespace tavrel::support {

/// As long as it lives, no thread can be started in this process, as where the system or the
/// user's session has as many as it may have. Those that run go on. One at a time; on Linux only.
class NoMoreThreads {
public:
    NoMoreThreads();
    ~NoMoreThreads();
    NoMoreThreads(const NoMoreThreads&) = delete;
    NoMoreThreads& operator=(const NoMoreThreads&) = delete;

private:
    std::size_t stackSizeBefore_ = 0;
};

}  // namespace tavrel::support
