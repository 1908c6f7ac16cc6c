#pragma once

#include <chrono>
#include <functional>
#include <vector>

#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// How often the one who goes last tries to switch a display on, and how long it waits in
/// between. A server that is busy with another change accepts within that time.
inline constexpr int insistentAttempts = 9;
inline constexpr std::chrono::milliseconds insistenceInterval{250};

/// Returns after the time it is given.
using Pause = std::function<void(std::chrono::milliseconds)>;

/// Calls `switchOn` for every display in `off`, again and again until it has taken all of them
/// out of there or the attempts are used up. A display that is refused does not keep the
/// others waiting.
template <typename SwitchOn>
void insist(const SwitchedOff& off, SwitchOn switchOn, const Pause& pause) {
    for (int attempt = 0; attempt < insistentAttempts && !off.isEmpty(); ++attempt) {
        if (attempt > 0) {
            pause(insistenceInterval);
        }
        // The last one off is the first one on, so that each finds the layout it left.
        const std::vector<DisplayID> displays(off.displays().rbegin(), off.displays().rend());
        for (const DisplayID display : displays) {
            switchOn(display);
        }
    }
}

}  // namespace tavrel::watchdog
