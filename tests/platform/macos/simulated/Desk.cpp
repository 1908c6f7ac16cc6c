#include "tests/platform/macos/simulated/Desk.h"

#include <algorithm>

#include "platform/ReconfigurationReports.h"

namespace tavrel::simulatedMac {

namespace {

bool makesADifference(State& state, const Change& change) {
    const Display* display = find(state, change.display);
    return display != nullptr && display->connected && display->enabled != change.enabled;
}

Report add(State& state, const Report& report) {
    return state.reports.at(state.reportCount++ % state.reports.size()) = report;
}

void addPlug(State& state, DisplayID display, std::uint32_t flags) {
    add(state, {display, displayChange::beginConfiguration, 0});
    add(state, {display, flags, 0});
}

}  // namespace

void reset(SharedState& mac) {
    mac.with([](State& state) { state = {}; });
}

void connect(SharedState& mac, const Display& display) {
    mac.with([&](State& state) {
        Display* known = find(state, display.id);
        if (known == nullptr) {
            known = &state.displays.at(state.displayCount++);
        }
        *known = display;
        addPlug(state, display.id, displayChange::add | displayChange::enabled);
    });
}

void disconnect(SharedState& mac, DisplayID display) {
    mac.with([&](State& state) {
        find(state, display)->connected = false;
        addPlug(state, display, displayChange::remove | displayChange::disabled);
    });
}

void switchElsewhere(SharedState& mac, const std::vector<DisplayID>& displays, bool on) {
    std::vector<Change> changes;
    changes.reserve(displays.size());
    for (const DisplayID display : displays) {
        changes.push_back({display, on});
    }
    mac.with([&](State& state) {
        begin(state, changes, 0);
        complete(state, changes, 0);
    });
}

std::vector<Display> displays(SharedState& mac) {
    return mac.with([](State& state) {
        return std::vector<Display>(
            state.displays.begin(),
            state.displays.begin() + static_cast<std::ptrdiff_t>(state.displayCount));
    });
}

bool isOn(SharedState& mac, DisplayID display) {
    return mac.with([&](State& state) {
        const Display* found = find(state, display);
        return found != nullptr && found->connected && found->enabled;
    });
}

Display* find(State& state, DisplayID display) {
    auto* const end = state.displays.begin() + state.displayCount;
    auto* const found = std::find_if(state.displays.begin(), end,
                                     [&](const Display& each) { return each.id == display; });
    return found == end ? nullptr : found;
}

std::vector<Report> begin(State& state, const std::vector<Change>& changes, pid_t madeBy) {
    std::vector<Report> reports;
    for (const Change& change : changes) {
        if (makesADifference(state, change)) {
            reports.push_back(
                add(state, {change.display, displayChange::beginConfiguration, madeBy}));
        }
    }
    return reports;
}

std::vector<Report> complete(State& state, const std::vector<Change>& changes, pid_t madeBy) {
    const std::uint32_t wentOn =
        displayChange::enabled | (state.switchesComeAndGo ? displayChange::add : 0);
    const std::uint32_t wentOff =
        displayChange::disabled | (state.switchesComeAndGo ? displayChange::remove : 0);
    std::vector<Report> reports;
    for (const Change& change : changes) {
        if (makesADifference(state, change)) {
            reports.push_back(
                add(state, {change.display, change.enabled ? wentOn : wentOff, madeBy}));
            find(state, change.display)->enabled = change.enabled;
        }
    }
    return reports;
}

}  // namespace tavrel::simulatedMac
