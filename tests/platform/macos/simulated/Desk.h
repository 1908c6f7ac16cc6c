#pragma once

#include <sys/types.h>

#include <vector>

#include "tests/platform/macos/simulated/SharedState.h"

/// What a person at a simulated Mac, or a program that is not simulated, does with its
/// displays and sees of them.
namespace tavrel::simulatedMac {

/// As new: nothing connected, nothing remembered, nothing refused.
void reset(SharedState& mac);

/// Plugs in a display, new or known.
void connect(SharedState& mac, const Display& display);
void disconnect(SharedState& mac, DisplayID display);

/// Another program switches displays, all in one change.
void switchElsewhere(SharedState& mac, const std::vector<DisplayID>& displays, bool on);

std::vector<Display> displays(SharedState& mac);
bool isOn(SharedState& mac, DisplayID display);

// ---- To be called within `SharedState::with`.

struct Change {
    DisplayID display;
    bool enabled;
};

/// Null for a display that was never connected.
Display* find(State& state, DisplayID display);

/// The first and the second half of a change of the layout by the process `madeBy` (0 for one
/// that is not simulated). Each adds its reports to the state and returns them. What makes no
/// difference is not reported.
std::vector<Report> begin(State& state, const std::vector<Change>& changes, pid_t madeBy);
std::vector<Report> complete(State& state, const std::vector<Change>& changes, pid_t madeBy);

}  // namespace tavrel::simulatedMac
