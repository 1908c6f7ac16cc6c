#include "platform/layout/LayoutPolicy.h"

#include <algorithm>
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
        return other.shown.has_value() && overlap(other.shown->area, was.area) &&
               std::find(was.mirrors.begin(), was.mirrors.end(), other.display) ==
                   was.mirrors.end();
    });
}

/// Right of all that is on and level with the rightmost of it; the origin when nothing is.
std::pair<int, int> placeAtTheRight(const Layout& layout) {
    std::pair<int, int> place{0, 0};
    for (const Output& output : layout.outputs) {
        if (!output.shown.has_value()) {
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

Shown showAnew(const Layout& layout, const Mode& mode, Rotation rotation) {
    const auto [x, y] = placeAtTheRight(layout);
    Area area{x, y, mode.width, mode.height};
    if (isSideways(rotation)) {
        std::swap(area.width, area.height);
    }
    return {.mode = mode, .area = area, .rotation = rotation};
}

}  // namespace

bool isLastShown(const Layout& layout, DisplayID display) {
    return std::none_of(layout.outputs.begin(), layout.outputs.end(), [&](const Output& other) {
        return other.display != display && other.isConnected && other.shown.has_value();
    });
}

RememberedOutput describe(const Layout& layout, DisplayID display, const Memory& memory) {
    const Shown& shown = *layout.output(display)->shown;
    RememberedOutput now{.display = display,
                         .mode = shown.mode,
                         .area = shown.area,
                         .rotation = shown.rotation,
                         .primary = layout.primary == display};
    for (const Output& other : layout.outputs) {
        if (other.display != display && other.shown.has_value() &&
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
        if (other.display != display && other.shown.has_value() &&
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
    const std::vector<Mode>& modes = layout.output(display)->modes;
    const RememberedOutput* was = find(memory, display);
    std::vector<WayBack> ways;
    if (was != nullptr && isPlaceFree(layout, *was) &&
        std::find(modes.begin(), modes.end(), was->mode) != modes.end()) {
        ways.push_back({{was->mode, was->area, was->rotation}, true});
    }
    if (!modes.empty()) {
        if (was != nullptr && was->rotation != rotate0) {
            ways.push_back({showAnew(layout, modes.front(), was->rotation), false});
        }
        ways.push_back({showAnew(layout, modes.front(), rotate0), false});
    }
    std::erase_if(ways, [&](const WayBack& way) { return !layout.hasRoomFor(way.shown.area); });
    return ways;
}

}  // namespace tavrel::layout
