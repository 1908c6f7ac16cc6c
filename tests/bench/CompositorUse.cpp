#include "tests/bench/CompositorUse.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <thread>

#include "tests/bench/Desk.h"
#include "tests/bench/IdleUse.h"
#include "tests/scenario/AccessibleReading.h"

namespace tavrel::bench {

namespace {

void measureStarts(const Played& played, const std::string& where, const Extent& extent,
                   Report& report) {
    std::vector<double> starts;
    for (int run = 0; run < extent.runs; ++run) {
        played.stage.quitApplication();
        const Time begin = Clock::now();
        played.stage.startApplication();
        starts.push_back(milliseconds(Clock::now() - begin));
    }
    report.add({.what = where + ": start until a screen reader has read the list",
                .unit = "ms",
                .ours = starts});
}

}  // namespace

double timePress(const Played& played, scenario::Display row, const OneDisplay& display, bool on) {
    std::optional<support::AccessibleElement> control;
    const bool isThere = support::waitUntil([&] {
        control = scenario::findSwitch(played.window().elements(), row);
        return control && control->isEnabled() && control->isChecked() != on;
    });
    if (!isThere) {
        throw std::runtime_error("there is no switch to press");
    }
    return display.timed(on, [&] { played.window().act(*control); });
}

void measureStay(const Played& played, const std::string& where, const Extent& extent,
                 Report& report) {
    measureStarts(played, where, extent, report);
    const std::vector<pid_t> family =
        withHelper(played.process(), "WAYLAND_DISPLAY=" + played.displayName);
    report.add({.what = where + ": resident memory, while a screen reader is there",
                .unit = "MiB",
                .ours = {ProcessUse::of(family.front()).residentMebibytes}});
    report.add({.what = where + ": memory of its own, with the helper",
                .unit = "MiB",
                .ours = {ProcessUse::of(family).privateMebibytes}});
    const IdleUse use(family);
    std::this_thread::sleep_for(extent.idle);
    use.report(where + ", idle", report);
}

void compareWays(const std::string& where, const std::vector<Way>& ways, const Extent& extent,
                 Report& report) {
    std::map<bool, std::map<std::string, std::vector<double>>> times;
    // The first round of each is not counted: it reads what later ones find in memory.
    for (int run = 0; run <= extent.runs; ++run) {
        for (const Way& way : ways) {
            for (const bool on : {false, true}) {
                const double time = way.time(on);
                if (run > 0) {
                    times[on][way.name].push_back(time);
                }
            }
        }
    }
    for (const bool on : {false, true}) {
        for (const Way& other : ways) {
            if (other.name != ways.front().name) {
                report.add({where + (on ? ": press to on" : ": press to off"), "ms",
                            times[on][ways.front().name], other.name, times[on][other.name],
                            other.goal});
            }
        }
    }
}

}  // namespace tavrel::bench
