#include <thread>
#include <vector>

#include "tests/bench/Desk.h"
#include "tests/bench/FilesOpened.h"
#include "tests/bench/Measures.h"
#include "tests/bench/ProcessUse.h"
#include "tests/bench/Traffic.h"

/// What the application and its helper cost while nobody wants anything of them. Two run at the
/// same time: one as users have it, and one whose words with the X server and whose opened files
/// are counted, which costs processor time of its own.
namespace tavrel::bench {
namespace {

/// What the one that is left alone has used.
void reportUse(const ProcessUse& before, const ProcessUse& after, double seconds, Report& report) {
    const double cpu = after.cpuMilliseconds - before.cpuMilliseconds;
    report.add({.what = "idle: wake-ups of the main thread in a second",
                .ours = {(after.mainThreadWakeUps - before.mainThreadWakeUps) / seconds},
                .goal = {Goal::Of::value, 1.1}});
    report.add({.what = "idle: wake-ups of all threads and the helper in a second",
                .ours = {(after.wakeUps - before.wakeUps) / seconds}});
    report.add({.what = "idle: context switches in a second",
                .ours = {(after.wakeUps + after.preemptions - before.wakeUps - before.preemptions) /
                         seconds}});
    report.add({.what = "idle: processor time, of one core",
                .unit = "%",
                .ours = {cpu / (10 * seconds)},
                .goal = {Goal::Of::value, 0.03}});
}

void reportTraffic(const TrafficCount& traffic, double seconds, Report& report) {
    report.add({.what = "idle: round trips to the server in a second",
                .ours = {static_cast<double>(traffic.roundTrips) / seconds},
                .goal = {Goal::Of::value, 2}});
    report.add({.what = "idle: requests to the server in a second",
                .ours = {static_cast<double>(traffic.requests) / seconds}});
    report.add({.what = "idle: sent to the server in a second",
                .unit = "B",
                .ours = {static_cast<double>(traffic.bytesToServer) / seconds},
                .goal = {Goal::Of::value, 1024}});
    report.add({.what = "idle: received from the server in a second",
                .unit = "B",
                .ours = {static_cast<double>(traffic.bytesFromServer) / seconds}});
}

}  // namespace

void measureIdle(const Extent& extent, Report& report) {
    const Desk desk;
    RunningApplication application(desk);
    const std::vector<pid_t> family = desk.familyOf(*application.process);

    const Desk countedDesk;
    Traffic traffic(countedDesk.displayName());
    RunningApplication counted(countedDesk, {{"DISPLAY", traffic.displayName()}});
    std::vector<pid_t> countedFamily = Desk::helpersOf(traffic.displayName());
    countedFamily.push_back(counted.process->pid());
    const FilesOpened files(countedFamily);

    application.watch.takePaints();
    const ProcessUse useBefore = ProcessUse::of(family);
    const TrafficCount trafficBefore = traffic.count();
    const Time begin = Clock::now();
    std::this_thread::sleep_until(begin + extent.idle);
    const double seconds = milliseconds(Clock::now() - begin) / 1e3;
    const ProcessUse useAfter = ProcessUse::of(family);
    const TrafficCount inAll = traffic.count() - trafficBefore;

    reportUse(useBefore, useAfter, seconds, report);
    reportTraffic(inAll, seconds, report);
    report.add({.what = "idle: files opened in all that time",
                .ours = {static_cast<double>(files.count())},
                .goal = {Goal::Of::value, 0}});
    report.add({.what = "idle: paints in all that time",
                .ours = {static_cast<double>(application.watch.takePaints())},
                .goal = {Goal::Of::value, 0}});
}

}  // namespace tavrel::bench
