#include "tests/platform/macos/simulated/Desk.h"

#include <algorithm>
#include <stdexcept>

#include "platform/ReconfigurationReports.h"

namespace tavrel::simulatedMac {

namespace {

bool makesADifference(State& state, const Change& change) {
    const Display* display = find(state, change.display);
    return display != nullptr && display->connected && display->enabled != change.enabled;
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
        add(state, {display.id, displayChange::beginConfiguration, 0});
        add(state, {display.id, displayChange::add | displayChange::enabled, 0});
    });
}

void disconnect(SharedState& mac, DisplayID display) {
    mac.with([&](State& state) {
        find(state, display)->connected = false;
        add(state, {display, displayChange::beginConfiguration, 0});
        add(state, {display, displayChange::remove | displayChange::disabled, 0});
    });
}

void switchElsewhere(SharedState& mac, const std::vector<DisplayID>& displays, bool on) {
    std::vector<Change> changes;
    changes.reserve(displays.size());
    for (const DisplayID display : displays) {
        changes.push_back({display, on});
    }
    mac.with([&](State& state) {
        for (const Report& report : beginReports(state, changes)) {
            add(state, report);
        }
        const std::vector<Report> reports = endReports(state, changes);
        applyChanges(state, changes);
        for (const Report& report : reports) {
            add(state, report);
        }
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

void plantPreference(SharedState& mac, std::string_view key, Preference::Kind kind,
                     std::string_view bytes) {
    mac.with([&](State& state) { setPreference(state, key, kind, bytes); });
}

std::string preferenceData(SharedState& mac, std::string_view key) {
    return mac.with([&](State& state) {
        const Preference* found = findPreference(state, key);
        return found == nullptr || found->kind != Preference::Kind::data
                   ? std::string()
                   : std::string(found->bytes.data(), found->size);
    });
}

Display* find(State& state, DisplayID display) {
    auto* const end = state.displays.begin() + state.displayCount;
    auto* const found = std::find_if(state.displays.begin(), end,
                                     [&](const Display& each) { return each.id == display; });
    return found == end ? nullptr : found;
}

void add(State& state, const Report& report) {
    state.reports.at(state.reportCount++ % state.reports.size()) = report;
}

std::vector<Report> beginReports(State& state, const std::vector<Change>& changes) {
    std::vector<Report> reports;
    for (const Change& change : changes) {
        if (makesADifference(state, change)) {
            reports.push_back({change.display, displayChange::beginConfiguration, 0});
        }
    }
    return reports;
}

std::vector<Report> endReports(State& state, const std::vector<Change>& changes) {
    const std::uint32_t wentOn =
        displayChange::enabled | (state.switchesComeAndGo ? displayChange::add : 0);
    const std::uint32_t wentOff =
        displayChange::disabled | (state.switchesComeAndGo ? displayChange::remove : 0);
    std::vector<Report> reports;
    for (const Change& change : changes) {
        if (makesADifference(state, change)) {
            reports.push_back({change.display, change.enabled ? wentOn : wentOff, 0});
        }
    }
    return reports;
}

void applyChanges(State& state, const std::vector<Change>& changes) {
    for (const Change& change : changes) {
        if (makesADifference(state, change)) {
            find(state, change.display)->enabled = change.enabled;
        }
    }
}

Preference* findPreference(State& state, std::string_view key) {
    auto* const found = std::find_if(
        state.preferences.begin(), state.preferences.end(), [&](const Preference& each) {
            return each.kind != Preference::Kind::none && key == each.key.data();
        });
    return found == state.preferences.end() ? nullptr : found;
}

void setPreference(State& state, std::string_view key, Preference::Kind kind,
                   std::string_view bytes) {
    Preference* place = findPreference(state, key);
    if (place == nullptr) {
        place = std::find_if(
            state.preferences.begin(), state.preferences.end(),
            [](const Preference& each) { return each.kind == Preference::Kind::none; });
    }
    if (place == state.preferences.end() || key.size() >= place->key.size() ||
        bytes.size() > place->bytes.size()) {
        throw std::length_error("a simulated Mac's preferences are full");
    }
    place->kind = kind;
    place->key = {};
    std::copy(key.begin(), key.end(), place->key.begin());
    place->size = static_cast<std::uint32_t>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), place->bytes.begin());
}

}  // namespace tavrel::simulatedMac
