#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace tavrel::simulation {

/// Something that happens to the simulated desk, its user or its faults.
struct Event {
    enum class Kind {
        userSwitch,
        userRefresh,
        userWakeAll,
        hotKey,
        plug,
        unplug,
        lidClose,
        lidOpen,
        outsideSwitch,
        outsideAllOff,
        idleReport,
        startFaults,
        stopFaults,
        wipeRegistry,
        corruptRegistry,
        lockStore,
        unlockStore,
        stepClock,
        quitAndRestart,
        /// Faults stop, and soon after there must be a usable display.
        converge,

        // Chosen one by one, never drawn: from now on exactly this fault, and it is certain.
        refuseSwitches,
        loseReports,
        loseLists,
        /// Nothing happens but that the gap passes.
        wait,
    };

    Kind kind;
    /// Simulated time between the event before and this one.
    std::chrono::milliseconds gap;
    /// Their meaning depends on the kind: a row, a display, a step of the clock.
    std::uint32_t a;
    std::uint32_t b;
};

std::string describe(const Event& event);

/// The events of about `hours` simulated hours, decided by `seed` alone. They still make sense
/// when any of them is left out.
std::vector<Event> generateEvents(std::uint64_t seed, double hours);

}  // namespace tavrel::simulation
