#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/macos/simulated/SharedState.h"

/// What a person at a simulated Mac, or a program that is not simulated, does and sees.
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

/// Puts a value of any kind under `key`.
void plantPreference(SharedState& mac, std::string_view key, Preference::Kind kind,
                     std::string_view bytes);
/// The bytes of data under `key` that other processes see; empty if there are none.
std::string preferenceData(SharedState& mac, std::string_view key);

// ---- Within `SharedState::with`.

struct Change {
    DisplayID display;
    bool enabled;
};

/// Null for a display that was never connected.
Display* find(State& state, DisplayID display);
void add(State& state, const Report& report);
/// The reports of the beginning, or of the end, of changes that will make a difference.
std::vector<Report> beginReports(State& state, const std::vector<Change>& changes);
std::vector<Report> endReports(State& state, const std::vector<Change>& changes);
void applyChanges(State& state, const std::vector<Change>& changes);
/// Null when there is none under `key`.
Preference* findPreference(State& state, std::string_view key);
void setPreference(State& state, std::string_view key, Preference::Kind kind,
                   std::string_view bytes);

}  // namespace tavrel::simulatedMac
