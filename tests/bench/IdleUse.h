#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "tests/bench/Clock.h"
#include "tests/bench/ProcessUse.h"
#include "tests/bench/Report.h"

namespace tavrel::bench {

/// What processes use from when this is created on.
class IdleUse {
public:
    /// The application's own process stands first.
    explicit IdleUse(std::vector<pid_t> processes)
        : processes_(std::move(processes)), before_(ProcessUse::of(processes_)) {}

    double seconds() const { return milliseconds(Clock::now() - begin_) / 1e3; }

    /// Adds rows, each of which begins with `where`.
    void report(const std::string& where, Report& report) const;

private:
    const std::vector<pid_t> processes_;
    const ProcessUse before_;
    const Time begin_ = Clock::now();
};

}  // namespace tavrel::bench
