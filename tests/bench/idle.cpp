#include <chrono>
#include <thread>
#include <vector>

#include "tests/bench/Desk.h"
#include "tests/bench/FilesOpened.h"
#include "tests/bench/IdleUse.h"
#include "tests/bench/Measures.h"
#include "tests/bench/Traffic.h"

/// What the application and its helper cost while nobody wants anything of them. Two run at the
/// same time: one as users have it, and one whose words with the X server are counted, which costs
/// processor time of its own.
namespace tavrel::bench {
namespace {

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

/// On its own, for being watched costs the programs time.
void reportFiles(const std::vector<pid_t>& family, Report& report) {
    constexpr std::chrono::seconds watched{10};
    FilesOpened files(family);
    std::this_thread::sleep_for(watched);
    report.add({.what = "idle: files opened in a second",
                .ours = {static_cast<double>(files.count()) / static_cast<double>(watched.count())},
                .goal = {Goal::Of::value, 0}});
}

}  // namespace

void measureIdle(const Extent& extent, Report& report) {
    const Desk desk;
    RunningApplication application(desk);
    const std::vector<pid_t> family =
        withHelper(application.process->pid(), "DISPLAY=" + desk.displayName());

    const Desk countedDesk;
    Traffic traffic(countedDesk.displayName());
    RunningApplication counted(countedDesk, {{"DISPLAY", traffic.displayName()}});
    application.watch.takePaints();
    const TrafficCount trafficBefore = traffic.count();
    const IdleUse use(family);
    std::this_thread::sleep_for(extent.idle);
    const TrafficCount inAll = traffic.count() - trafficBefore;

    use.report("idle", report);
    reportTraffic(inAll, use.seconds(), report);
    report.add({.what = "idle: paints in all that time",
                .ours = {static_cast<double>(application.watch.takePaints())},
                .goal = {Goal::Of::value, 0}});
    reportFiles(family, report);
}

}  // namespace tavrel::bench
