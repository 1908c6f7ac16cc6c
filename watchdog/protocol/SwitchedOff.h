#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/DisplayQueries.h"

namespace tavrel::watchdog {

/// The displays that this application has, or may have, switched off and not on again, in
/// the order in which they were switched off. Both the supervisor and the watchdog keep it.
class SwitchedOff {
public:
    void add(DisplayID display) {
        if (!contains(display)) {
            displays_.push_back(display);
        }
    }
    void remove(DisplayID display) {
        std::erase(displays_, display);
        std::erase(inDoubt_, display);
    }
    bool contains(DisplayID display) const {
        return std::find(displays_.begin(), displays_.end(), display) != displays_.end();
    }
    bool isEmpty() const { return displays_.empty(); }
    const std::vector<DisplayID>& displays() const { return displays_; }

    /// Adds a display of which nobody can say whether the server still switched it off: it
    /// stopped answering meanwhile.
    void addInDoubt(DisplayID display) {
        if (!contains(display)) {
            add(display);
            inDoubt_.push_back(display);
        }
    }
    bool isInDoubt() const { return !inDoubt_.empty(); }

    /// Takes a moment's word for the displays in doubt: those that are on were not switched
    /// off. Does nothing while the server cannot say.
    void settle(DisplayMoment& moment) {
        if (!moment.isCurrent() || !moment.onlineDisplays()) {
            return;
        }
        for (const DisplayID display : std::vector(inDoubt_)) {
            if (moment.isActive(display)) {
                remove(display);
            }
        }
        inDoubt_.clear();
    }

private:
    std::vector<DisplayID> displays_;
    /// A part of `displays_`.
    std::vector<DisplayID> inDoubt_;
};

/// How often whoever is the last to try switches a display on, and how long it waits in between.
/// A server that is busy with another change accepts within that time.
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
