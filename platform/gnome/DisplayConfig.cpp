#include "platform/gnome/DisplayConfig.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace tavrel::gnome {

namespace {

/// To the last digit as the compositor has it: it compares.
double exactScale(const layout::Mode& mode, double scale) {
    const auto nearest = std::min_element(
        mode.scales.begin(), mode.scales.end(),
        [scale](double a, double b) { return std::abs(a - scale) < std::abs(b - scale); });
    return nearest == mode.scales.end() ? scale : *nearest;
}

/// The place in the list for what is shown there; a new one unless it is a mirror.
LogicalSetting& placeFor(const layout::Shown& shown, const layout::Mode& mode,
                         std::vector<LogicalSetting>& places) {
    const auto found = std::find_if(places.begin(), places.end(), [&](const LogicalSetting& each) {
        return each.x == shown.area.x && each.y == shown.area.y;
    });
    if (found != places.end()) {
        return *found;
    }
    return places.emplace_back(LogicalSetting{.x = shown.area.x,
                                              .y = shown.area.y,
                                              .scale = exactScale(mode, shown.scale),
                                              .transform = layout::transformOf(shown.rotation)});
}

/// The mode of this description; of several alike, the one it is in.
const MonitorMode* findMode(const Monitor& monitor, const layout::Mode& wanted) {
    if (monitor.currentMode.has_value() && monitor.modes.at(*monitor.currentMode).mode == wanted) {
        return &monitor.modes.at(*monitor.currentMode);
    }
    const auto found = std::find_if(monitor.modes.begin(), monitor.modes.end(),
                                    [&](const MonitorMode& each) { return each.mode == wanted; });
    return found == monitor.modes.end() ? nullptr : &*found;
}

}  // namespace

std::optional<Configuration> configurationOf(const layout::WholeLayout& whole,
                                             const MonitorState& state) {
    const layout::Layout layout = layoutOf(state);
    Configuration configuration{.serial = state.serial};
    if (state.canChangeLayoutMode) {
        configuration.layoutMode = state.layoutMode;
    }
    for (std::size_t i = 0; i < state.monitors.size(); ++i) {
        const DisplayID display = layout.outputs[i].display;
        const std::optional<layout::Shown> shown = whole.shown(display);
        if (!shown.has_value()) {
            continue;
        }
        const Monitor& monitor = state.monitors[i];
        const MonitorMode* mode = findMode(monitor, shown->mode);
        if (mode == nullptr) {
            return std::nullopt;
        }
        LogicalSetting& place = placeFor(*shown, mode->mode, configuration.logicalMonitors);
        place.isPrimary = place.isPrimary || whole.primary == display;
        place.monitors.push_back({monitor.connector, mode->id, monitor.settings});
    }
    return configuration;
}

std::optional<Configuration> configurationOf(const MonitorState& state) {
    return configurationOf(layout::wholeOf(layoutOf(state)), state);
}

}  // namespace tavrel::gnome
