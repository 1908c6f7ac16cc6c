#include "platform/x11/snapshot/SnapshotDiff.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "platform/layout/Identity.h"

namespace tavrel::x11 {

namespace {

/// What of a display its reports are about. Of one that is not connected, nothing is set.
struct State {
    bool connected = false;
    bool primary = false;
    bool active = false;
    bool mirrored = false;
    Area area = {};
    ModeTimings mode = {};
    Rotation rotation = upright;
};

State stateOf(const Snapshot& snapshot, const Output& output) {
    State state{.connected = true, .primary = snapshot.primary == output.id};
    const Crtc* crtc = snapshot.activeCrtc(output);
    if (crtc == nullptr) {
        return state;
    }
    state.active = true;
    state.area = crtc->area;
    state.rotation = crtc->rotation;
    if (const Mode* mode = snapshot.mode(crtc->mode); mode != nullptr) {
        state.mode = mode->timings;
    }
    state.mirrored =
        std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const Output& other) {
            const Crtc* driving = snapshot.activeCrtc(other);
            return other.id != output.id && driving != nullptr &&
                   overlap(driving->area, crtc->area);
        });
    return state;
}

std::map<DisplayID, State> statesIn(const Snapshot& snapshot) {
    const auto identifiers = displayIdentifiers(snapshot);
    std::map<DisplayID, State> states;
    for (const Output& output : snapshot.outputs) {
        if (output.connected) {
            states.emplace(identifiers.at(output.id), stateOf(snapshot, output));
        }
    }
    return states;
}

/// `gained` when a quality appeared, `lost` when it went, else nothing.
std::uint32_t turn(bool before, bool after, std::uint32_t gained, std::uint32_t lost) {
    return before == after ? 0 : after ? gained : lost;
}

std::uint32_t flagsBetween(const State& before, const State& after) {
    using namespace displayChange;
    std::uint32_t flags = turn(before.connected, after.connected, add, remove) |
                          turn(before.active, after.active, enabled, disabled) |
                          turn(before.mirrored, after.mirrored, mirror, unMirror) |
                          turn(before.primary, after.primary, setMain, 0);
    if (before.active && after.active) {
        const bool sameMode = before.mode == after.mode && before.rotation == after.rotation &&
                              before.area.width == after.area.width &&
                              before.area.height == after.area.height;
        const bool samePlace = before.area.x == after.area.x && before.area.y == after.area.y;
        flags |= (sameMode ? 0 : setMode) | (samePlace ? 0 : moved);
    }
    return flags;
}

}  // namespace

std::vector<DisplayReport> reportsBetween(const Snapshot& before, const Snapshot& after) {
    std::map<DisplayID, std::pair<State, State>> pairs;
    for (const auto& [display, state] : statesIn(before)) {
        pairs[display].first = state;
    }
    for (const auto& [display, state] : statesIn(after)) {
        pairs[display].second = state;
    }
    std::vector<DisplayReport> reports;
    for (const auto& [display, pair] : pairs) {
        if (const std::uint32_t flags = flagsBetween(pair.first, pair.second); flags != 0) {
            reports.push_back({display, flags});
        }
    }
    return reports;
}

}  // namespace tavrel::x11
