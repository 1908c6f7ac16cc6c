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
        /// The user flips all switches before anything comes of the first.
        userFlipsAll,
        userRefresh,
        userWakeAll,
        hotKey,
        plug,
        unplug,
        /// The panel is unplugged under its lid, as on a Mac.
        lidClose,
        lidOpen,
        /// The panel goes on being driven under its lid, as by an X server.
        lidCloseUnseen,
        lidOpenUnseen,
        outsideSwitch,
        outsideAllOff,
        idleReport,
        startFaults,
        /// Each switch takes seconds, and some are given up before they are answered.
        slowServer,
        /// The server does nothing and says nothing, for anybody.
        serverFallsSilent,
        serverSpeaks,
        stopFaults,
        /// The application's main thread does nothing for a while.
        hangApplication,
        /// The process of a helper is stopped, and goes on.
        stopHelper,
        helperGoesOn,
        /// A second copy of the application is launched beside the first, and quits.
        secondLaunches,
        secondQuits,
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
