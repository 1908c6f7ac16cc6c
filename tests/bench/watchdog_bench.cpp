#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "platform/layout/Identity.h"
#include "platform/posix/DefaultsPath.h"
#include "platform/posix/FileUserDefaults.h"
#include "platform/x11/X11WindowServer.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/watchdog/SharedDisplays.h"
#include "watchdog/application/GuardedSwitch.h"
#include "watchdog/application/WatchdogProcess.h"

/// What it costs to have displays switched by the watchdog: on a real X server, and on displays
/// that cost nothing, where the watchdog's cost is all there is. Fails above the limits.
namespace tavrel {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr Milliseconds overheadLimit{1};
constexpr Milliseconds readyLimit{10};

struct Timings {
    std::vector<Milliseconds> all;

    void take(const std::function<void()>& action) {
        const auto begin = Clock::now();
        action();
        all.emplace_back(Clock::now() - begin);
    }
    Milliseconds quantile(double part) {
        const auto at =
            all.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(all.size() - 1));
        std::nth_element(all.begin(), at, all.end());
        return *at;
    }
    Milliseconds median() { return quantile(0.5); }
};

void print(const std::string& what, Timings& timings) {
    std::cout << std::left << std::setw(34) << what << std::right << std::fixed
              << std::setprecision(3) << std::setw(9) << timings.median().count() << " ms median"
              << std::setw(9) << timings.quantile(0.95).count() << " ms 95 %" << std::setw(6)
              << timings.all.size() << " times\n";
}

void switchOrStop(DisplaySwitch& displays, DisplayID display, bool enabled) {
    if (displays.setDisplayEnabled(display, enabled) != serverStatus::success) {
        std::cerr << "a switch failed\n";
        std::exit(EXIT_FAILURE);
    }
}

/// Switches one display off and on, in turns through each; returns the overhead.
Milliseconds compare(const std::string& where, DisplaySwitch& unguarded, DisplaySwitch& guarded,
                     DisplayID display, int rounds) {
    Timings plain;
    Timings viaWatchdog;
    for (int round = 0; round < rounds; ++round) {
        for (const bool enabled : {false, true}) {
            plain.take([&] { switchOrStop(unguarded, display, enabled); });
        }
        for (const bool enabled : {false, true}) {
            viaWatchdog.take([&] { switchOrStop(guarded, display, enabled); });
        }
    }
    print(where + ", unguarded switch", plain);
    print(where + ", guarded switch", viaWatchdog);
    const Milliseconds overhead = viaWatchdog.median() - plain.median();
    std::cout << where << ": overhead in the median " << overhead.count() << " ms (at most "
              << overheadLimit.count() << ")\n";
    return overhead;
}

Milliseconds compareOnMemory(const std::filesystem::path& folder) {
    const std::string file = (folder / "displays").string();
    setenv(watchdog::SharedDisplays::variable, file.c_str(), 1);
    watchdog::SharedDisplays displays(file);
    watchdog::GuardedSwitch guarded(displays, displays, {.startWatchdog = [] {
                                        return watchdog::WatchdogProcess::start(STUB_WATCHDOG);
                                    }});
    const Milliseconds overhead = compare("memory", displays, guarded, 1, 5000);
    guarded.goodbye();
    return overhead;
}

Milliseconds compareOnServer() {
    FileUserDefaults store(defaultsPath());
    X11WindowServer server(store);
    watchdog::GuardedSwitch guarded(server, server, {.startWatchdog = [] {
                                        return watchdog::WatchdogProcess::start(TAVREL_WATCHDOG);
                                    }});
    const DisplayID display = layout::stableHash("DUMMY1/0/0/0");
    const Milliseconds overhead = compare("X server", server, guarded, display, 200);
    guarded.goodbye();
    return overhead;
}

Milliseconds timeToReady() {
    Timings starts;
    for (int start = 0; start < 100; ++start) {
        std::unique_ptr<watchdog::WatchdogProcess> started;
        starts.take([&] {
            started = watchdog::WatchdogProcess::start(TAVREL_WATCHDOG);
            started->link().receive(std::chrono::seconds(10));
        });
    }
    print("start of a watchdog until it is ready", starts);
    return starts.median();
}

int run() {
    const support::TemporaryFolder folder;
    setenv("XDG_CONFIG_HOME", folder.path().c_str(), 1);
    const support::VirtualDesktop desktop;
    setenv("DISPLAY", desktop.displayName().c_str(), 1);

    const bool holds = timeToReady() <= readyLimit &&
                       compareOnMemory(folder.path()) <= overheadLimit &&
                       compareOnServer() <= overheadLimit;
    std::cout << (holds ? "within the limits\n" : "ABOVE A LIMIT\n");
    return holds ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace tavrel

int main() {
    return tavrel::run();
}
