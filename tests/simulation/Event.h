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
        /// Faults stop, and soon a usable display must be there.
        converge,
    };

    Kind kind;
    /// Simulated time between the event before and this one.
    std::chrono::milliseconds gap;
    /// What the kind makes of it: a row, a display, a number of seconds.
    std::uint32_t a;
    std::uint32_t b;
};

std::string describe(const Event& event);

/// The events of about `hours` simulated hours, decided by `seed` alone. Each can be left
/// out without making nonsense of the others.
std::vector<Event> generateEvents(std::uint64_t seed, double hours);

}  // namespace tavrel::simulation
