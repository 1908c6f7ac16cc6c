#include "platform/layout/LayoutDiff.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

namespace tavrel::layout {

namespace {

/// What of a display its reports are about. Of one that is not connected, nothing is set.
struct State {
    bool connected = false;
    bool primary = false;
    bool mirrored = false;
    std::optional<Shown> shown = {};
};

bool isMirrored(const Layout& layout, const Output& output) {
    return std::any_of(layout.outputs.begin(), layout.outputs.end(), [&](const auto& other) {
        return other.display != output.display && other.isActive() && output.isActive() &&
               overlap(other.shown->area, output.shown->area);
    });
}

std::map<DisplayID, State> statesIn(const Layout& layout) {
    std::map<DisplayID, State> states;
    for (const Output& output : layout.outputs) {
        if (output.isConnected) {
            states.emplace(output.display, State{.connected = true,
                                                 .primary = layout.primary == output.display,
                                                 .mirrored = isMirrored(layout, output),
                                                 .shown = output.shown});
        }
    }
    return states;
}

/// `gained` when a quality appeared, `lost` when it went, else nothing.
std::uint32_t turn(bool before, bool after, std::uint32_t gained, std::uint32_t lost) {
    return before == after ? 0 : after ? gained : lost;
}

std::uint32_t flagsBetween(const Shown& before, const Shown& after) {
    const bool sameMode = before.mode == after.mode && before.rotation == after.rotation &&
                          before.scale == after.scale && before.area.width == after.area.width &&
                          before.area.height == after.area.height;
    const bool samePlace = before.area.x == after.area.x && before.area.y == after.area.y;
    return (sameMode ? 0 : displayChange::setMode) | (samePlace ? 0 : displayChange::moved);
}

std::uint32_t flagsBetween(const State& before, const State& after) {
    using namespace displayChange;
    const std::uint32_t flags =
        turn(before.connected, after.connected, add, remove) |
        turn(before.shown.has_value(), after.shown.has_value(), enabled, disabled) |
        turn(before.mirrored, after.mirrored, mirror, unMirror) |
        turn(before.primary, after.primary, setMain, 0);
    return before.shown.has_value() && after.shown.has_value()
               ? flags | flagsBetween(*before.shown, *after.shown)
               : flags;
}

}  // namespace

std::vector<DisplayReport> reportsBetween(const Layout& before, const Layout& after) {
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

}  // namespace tavrel::layout
