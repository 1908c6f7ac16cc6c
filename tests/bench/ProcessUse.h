#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace tavrel::bench {

/// What a running process has used up so far, and holds, as Linux counts it.
struct ProcessUse {
    /// Of all its threads, those that have ended included.
    double cpuMilliseconds = 0;
    /// How often a thread has gone to sleep, and so how often one has been woken.
    double wakeUps = 0;
    double mainThreadWakeUps = 0;
    /// How often a thread was made to wait for another that wanted the processor.
    double preemptions = 0;
    double residentMebibytes = 0;
    /// Of its own, and written to: what is not there any more once it has ended.
    double privateMebibytes = 0;

    /// Throws std::runtime_error when there is no such process.
    static ProcessUse of(pid_t process);
    /// Of several together; but the main thread is the first one's.
    static ProcessUse of(const std::vector<pid_t>& processes);
};

}  // namespace tavrel::bench
