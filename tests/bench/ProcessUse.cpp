#include "tests/bench/ProcessUse.h"

#include <ctime>
#include <filesystem>
#include <stdexcept>

#include "tests/support/NumberIn.h"

namespace tavrel::bench {

namespace {

using support::numberIn;

double cpuMillisecondsOf(pid_t process) {
    clockid_t clock{};
    timespec time{};
    if (::clock_getcpuclockid(process, &clock) != 0 || ::clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("process " + std::to_string(process) + " has ended");
    }
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

}  // namespace

ProcessUse ProcessUse::of(pid_t process) {
    constexpr double kibibytesInMebibyte = 1024;
    const std::filesystem::path folder = "/proc/" + std::to_string(process);
    ProcessUse use;
    use.cpuMilliseconds = cpuMillisecondsOf(process);
    for (const auto& thread : std::filesystem::directory_iterator(folder / "task")) {
        const double wakeUps = numberIn(thread.path() / "status", "voluntary_ctxt_switches");
        use.wakeUps += wakeUps;
        if (thread.path().filename() == std::to_string(process)) {
            use.mainThreadWakeUps = wakeUps;
        }
        use.preemptions += numberIn(thread.path() / "status", "nonvoluntary_ctxt_switches");
    }
    const auto memory = folder / "smaps_rollup";
    use.residentMebibytes = numberIn(memory, "Rss") / kibibytesInMebibyte;
    use.privateMebibytes = numberIn(memory, "Private_Dirty") / kibibytesInMebibyte;
    return use;
}

ProcessUse ProcessUse::of(const std::vector<pid_t>& processes) {
    ProcessUse sum;
    for (const pid_t each : processes) {
        const ProcessUse use = of(each);
        sum.cpuMilliseconds += use.cpuMilliseconds;
        sum.wakeUps += use.wakeUps;
        if (each == processes.front()) {
            sum.mainThreadWakeUps = use.mainThreadWakeUps;
        }
        sum.preemptions += use.preemptions;
        sum.residentMebibytes += use.residentMebibytes;
        sum.privateMebibytes += use.privateMebibytes;
    }
    return sum;
}

}  // namespace tavrel::bench
