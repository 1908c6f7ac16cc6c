#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/bench/BareSwitch.h"
#include "tests/bench/Desk.h"
#include "tests/bench/LayoutWatch.h"
#include "tests/bench/Measures.h"
#include "tests/bench/SwitchClicks.h"
#include "tests/support/ChildProcess.h"

/// From a click on a switch until the X server says that the monitor is off, or on: beside a run
/// of xrandr, and beside the requests alone, each on a desk without the application.
namespace tavrel::bench {
namespace {

/// Of one way to switch, what each run has taken.
struct Durations {
    std::vector<double> off;
    std::vector<double> on;

    std::vector<double>& of(bool isOn) { return isOn ? on : off; }
};

/// How long after `act` the server says that the monitor has been switched.
double timed(LayoutWatch& watch, bool on, const std::function<void()>& act) {
    watch.forget();
    const Time begin = Clock::now();
    act();
    return milliseconds(watch.awaitSwitch(on) - begin);
}

class Clicks {
public:
    double timeOne(bool on) {
        clicks_.press();
        return timed(watch_, on, [&] { clicks_.release(); });
    }

private:
    Desk desk_;
    RunningApplication application_{desk_};
    SwitchClicks clicks_{desk_, application_};
    LayoutWatch watch_{desk_.displayName()};
};

class XrandrRuns {
public:
    double timeOne(bool on) {
        support::ChildProcess::Options options;
        options.command = {"xrandr", "--output", switchedOutput};
        if (on) {
            options.command.insert(options.command.end(), {"--auto", "--pos", "1920x0"});
        } else {
            options.command.emplace_back("--off");
        }
        options.environment["DISPLAY"] = desktop_.displayName();
        std::optional<support::ChildProcess> process;
        const double duration = timed(watch_, on, [&] { process.emplace(options); });
        process->waitForEnd();
        return duration;
    }

private:
    support::VirtualDesktop desktop_;
    LayoutWatch watch_{desktop_.displayName()};
};

class Requests {
public:
    double timeOne(bool on) {
        return timed(watch_, on, [&] { switch_.set(on); });
    }

private:
    support::VirtualDesktop desktop_;
    LayoutWatch watch_{desktop_.displayName()};
    BareSwitch switch_{desktop_.displayName(), switchedOutput};
};

}  // namespace

void measureSwitching(const Extent& extent, Report& report) {
    Clicks clicks;
    XrandrRuns xrandr;
    Requests requests;
    Durations ofClicks;
    Durations ofXrandr;
    Durations ofRequests;
    // The first round of each is not counted: it reads what later ones find in memory.
    for (int run = 0; run <= extent.runs; ++run) {
        for (const bool on : {false, true}) {
            const double click = clicks.timeOne(on);
            const double process = xrandr.timeOne(on);
            const double request = requests.timeOne(on);
            if (run > 0) {
                ofClicks.of(on).push_back(click);
                ofXrandr.of(on).push_back(process);
                ofRequests.of(on).push_back(request);
            }
        }
    }
    for (const bool on : {false, true}) {
        const std::string what = on ? "click to on" : "click to off";
        report.add({what, "ms", ofClicks.of(on), "the requests alone", ofRequests.of(on),
                    Goal{Goal::Of::excess, 2}});
        report.add({what, "ms", ofClicks.of(on), "xrandr as a process", ofXrandr.of(on),
                    Goal{Goal::Of::ratio, 0.5}});
    }
}

}  // namespace tavrel::bench
