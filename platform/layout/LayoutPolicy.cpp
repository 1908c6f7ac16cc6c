#include "platform/layout/LayoutPolicy.h"

#include <algorithm>
#include <cstddef>
#include <tuple>
#include <utility>

namespace tavrel::layout {

namespace {

/// Whether the display the primary role belongs to is off. Whoever has the role meanwhile has
/// it on loan.
bool isPrimaryOnLoan(const Layout& layout, const Memory& memory) {
    return std::any_of(layout.outputs.begin(), layout.outputs.end(), [&](const Output& output) {
        const RememberedOutput* was = find(memory, output.display);
        return was != nullptr && was->primary && !was->primaryOnLoan && output.isConnected &&
               !output.shown.has_value();
    });
}

/// Only its old mirrors may be there.
bool isPlaceFree(const Layout& layout, const RememberedOutput& was) {
    return std::none_of(layout.outputs.begin(), layout.outputs.end(), [&](const Output& other) {
        return other.isActive() && overlap(other.shown->area, was.area) &&
               std::find(was.mirrors.begin(), was.mirrors.end(), other.display) ==
                   was.mirrors.end();
    });
}

/// The origin for the only monitor: left of it would be a desktop that nobody can see.
Area placeAsItWas(const Layout& layout, const RememberedOutput& was) {
    const bool isAlone = std::none_of(
        layout.outputs.begin(), layout.outputs.end(),
        [&](const Output& other) { return other.display != was.display && other.isConnected; });
    return isAlone ? Area{0, 0, was.area.width, was.area.height} : was.area;
}

/// Right of all that is active and level with the rightmost of it; the origin when nothing is.
std::pair<int, int> placeAtTheRight(const Layout& layout) {
    std::pair<int, int> place{0, 0};
    for (const Output& output : layout.outputs) {
        if (!output.isActive()) {
            continue;
        }
        const Area& area = output.shown->area;
        const bool further = area.right() > place.first;
        const bool levelAndHigher = area.right() == place.first && area.y < place.second;
        if (further || levelAndHigher) {
            place = {area.right(), area.y};
        }
    }
    return place;
}

/// In another mode than it had, a display has another size of everything, so its scale is
/// chosen anew as well.
double scaleAnew(const Mode& mode, const RememberedOutput* was) {
    if (was != nullptr && was->mode == mode && offersScale(mode, was->scale)) {
        return was->scale;
    }
    return mode.scales.empty() ? 1 : mode.scales.front();
}

Shown showAnew(const Layout& layout, const Mode& mode, Rotation rotation, double scale) {
    Area area = layout.areaOf(mode, rotation, scale);
    std::tie(area.x, area.y) = placeAtTheRight(layout);
    return {.mode = mode, .area = area, .rotation = rotation, .scale = scale};
}

}  // namespace

bool isNothingShown(const Layout& layout) {
    return std::none_of(layout.outputs.begin(), layout.outputs.end(),
                        [](const Output& output) { return output.isActive(); });
}

bool isLastShown(const Layout& layout, DisplayID display) {
    return std::none_of(layout.outputs.begin(), layout.outputs.end(), [&](const Output& other) {
        return other.display != display && other.isActive();
    });
}

RememberedOutput describe(const Layout& layout, DisplayID display, const Memory& memory) {
    const Shown& shown = *layout.output(display)->shown;
    RememberedOutput now{.display = display,
                         .mode = shown.mode,
                         .area = shown.area,
                         .rotation = shown.rotation,
                         .scale = shown.scale,
                         .primary = layout.primary == display};
    for (const Output& other : layout.outputs) {
        if (other.display != display && other.isActive() &&
            overlap(other.shown->area, shown.area)) {
            now.mirrors.push_back(other.display);
        }
    }
    now.primaryOnLoan = now.primary && isPrimaryOnLoan(layout, memory);
    return now;
}

std::optional<DisplayID> nextPrimary(const Layout& layout, DisplayID display) {
    if (layout.primary != display) {
        return std::nullopt;
    }
    const Output* best = nullptr;
    const auto place = [](const Output& output) {
        return std::tuple(output.shown->area.x, output.shown->area.y, output.identity.connector);
    };
    for (const Output& other : layout.outputs) {
        if (other.display != display && other.isActive() &&
            (best == nullptr || place(other) < place(*best))) {
            best = &other;
        }
    }
    return best == nullptr ? std::nullopt : std::optional(best->display);
}

bool regainsPrimary(const Layout& layout, DisplayID display, const Memory& memory) {
    const RememberedOutput* was = find(memory, display);
    return was != nullptr && was->primary && layout.primary.has_value() &&
           layout.primary != display && (!was->primaryOnLoan || isPrimaryOnLoan(layout, memory));
}

std::vector<WayBack> waysBack(const Layout& layout, DisplayID display, const Memory& memory) {
    const RememberedOutput* was = find(memory, display);
    std::vector<Mode> modes = layout.output(display)->modes;
    std::vector<WayBack> ways;
    if (was != nullptr) {
        const auto itsMode = std::find(modes.begin(), modes.end(), was->mode);
        if (itsMode != modes.end() && offersScale(*itsMode, was->scale) &&
            isPlaceFree(layout, *was)) {
            ways.push_back(
                {{was->mode, placeAsItWas(layout, *was), was->rotation, was->scale}, true});
        }
        if (itsMode != modes.end()) {
            std::rotate(modes.begin(), itsMode, itsMode + 1);
        }
    }
    if (!isNothingShown(layout) && modes.size() > mostModesBesideOthers) {
        modes.resize(mostModesBesideOthers);
    }
    for (const Mode& mode : modes) {
        const double scale = scaleAnew(mode, was);
        if (was != nullptr && was->rotation != rotate0) {
            ways.push_back({showAnew(layout, mode, was->rotation, scale), false});
        }
        ways.push_back({showAnew(layout, mode, rotate0, scale), false});
    }
    std::erase_if(ways, [&](const WayBack& way) { return !layout.hasRoomFor(way.shown.area); });
    return ways;
}

}  // namespace tavrel::layout
