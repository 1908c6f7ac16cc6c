#include <chrono>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <variant>
#include <vector>

#include "tests/bench/Clock.h"
#include "tests/bench/Measures.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/application/GuardedSwitch.h"
#include "watchdog/application/WatchdogProcess.h"

/// What it costs to have displays switched by the helper: on displays that cost nothing, so that
/// the helper's cost is all there is. And how soon a new one is ready.
namespace tavrel::bench {
namespace {

double timed(DisplaySwitch& displays, bool enabled) {
    const Time begin = Clock::now();
    if (displays.setDisplayEnabled(1, enabled) != serverStatus::success) {
        throw std::runtime_error("a display is not switched");
    }
    return milliseconds(Clock::now() - begin);
}

double timeToReady() {
    const Time begin = Clock::now();
    const auto helper = watchdog::WatchdogProcess::start(TAVREL_WATCHDOG);
    if (helper == nullptr || !std::holds_alternative<watchdog::Message>(
                                 helper->link().receive(std::chrono::seconds(10)))) {
        throw std::runtime_error("the helper does not start");
    }
    return milliseconds(Clock::now() - begin);
}

}  // namespace

void measureHelper(const Extent& extent, Report& report) {
    const support::TemporaryFolder folder;
    const std::string file = (folder.path() / "displays").string();
    ::setenv(watchdog::SharedDisplays::variable, file.c_str(), 1);
    watchdog::SharedDisplays displays(file);
    watchdog::GuardedSwitch guarded(displays, displays, {.startWatchdog = [](const auto& first) {
                                        return watchdog::WatchdogProcess::start(STUB_WATCHDOG,
                                                                                first);
                                    }});
    constexpr int switchesInARun = 20;
    std::vector<double> withHelper;
    std::vector<double> without;
    for (int each = 0; each < extent.runs * switchesInARun; ++each) {
        const bool on = each % 2 == 1;
        without.push_back(timed(displays, on));
        displays.setDisplayEnabled(1, !on);
        withHelper.push_back(timed(guarded, on));
    }
    guarded.goodbye();
    report.add({"a switch by the helper", "ms", withHelper, "without it", without,
                Goal{Goal::Of::excess, 1}});

    const support::VirtualDesktop desktop;
    ::setenv("DISPLAY", desktop.displayName().c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    std::vector<double> ready;
    ready.reserve(static_cast<std::size_t>(extent.runs));
    for (int run = 0; run < extent.runs; ++run) {
        ready.push_back(timeToReady());
    }
    report.add({.what = "start of the helper until it is ready",
                .unit = "ms",
                .ours = ready,
                .goal = {Goal::Of::value, 10}});
}

}  // namespace tavrel::bench
