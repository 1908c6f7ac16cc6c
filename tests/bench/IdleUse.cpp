#include "tests/bench/IdleUse.h"

namespace tavrel::bench {

void IdleUse::report(const std::string& where, Report& report) const {
    const ProcessUse after = ProcessUse::of(processes_);
    const double passed = seconds();
    const auto inASecond = [&](double ProcessUse::*figure) {
        return (after.*figure - before_.*figure) / passed;
    };
    // A tick comes each second; the rest allows for a few wake-ups that come by themselves.
    constexpr double ticks = 1.1;
    report.add({.what = where + ": wake-ups of the main thread in a second",
                .ours = {inASecond(&ProcessUse::mainThreadWakeUps)},
                .goal = {Goal::Of::value, ticks}});
    report.add({.what = where + ": wake-ups of all threads and the helper in a second",
                .ours = {inASecond(&ProcessUse::wakeUps)}});
    report.add({.what = where + ": context switches in a second",
                .ours = {inASecond(&ProcessUse::wakeUps) + inASecond(&ProcessUse::preemptions)}});
    constexpr double percentOfMilliseconds = 0.1;
    report.add({.what = where + ": processor time, of one core",
                .unit = "%",
                .ours = {inASecond(&ProcessUse::cpuMilliseconds) * percentOfMilliseconds},
                .goal = {Goal::Of::value, 0.03}});
}

}  // namespace tavrel::bench
