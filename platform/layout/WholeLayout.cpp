#include "platform/layout/WholeLayout.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include "platform/layout/Arrangement.h"
#include "platform/layout/LayoutPolicy.h"

namespace tavrel::layout {

namespace {

const Standing* find(const Arrangement& arrangement, DisplayID display) {
    const auto found = std::find_if(arrangement.begin(), arrangement.end(),
                                    [&](const Standing& each) { return each.display == display; });
    return found == arrangement.end() ? nullptr : &*found;
}

Arrangement arrangementOf(const Layout& layout) {
    Arrangement arrangement;
    for (const Output& output : layout.outputs) {
        if (output.isActive()) {
            arrangement.push_back({output.display, output.shown->area});
        }
    }
    return arrangement;
}

Arrangement without(Arrangement arrangement, DisplayID display) {
    std::erase_if(arrangement, [&](const Standing& each) { return each.display == display; });
    return arrangement;
}

/// Those of `all` that are on now, and `display`.
Arrangement present(const Layout& layout, const Arrangement& all, DisplayID display) {
    Arrangement kept;
    for (const Standing& each : all) {
        const Output* output = layout.output(each.display);
        if (each.display == display || (output != nullptr && output->isActive())) {
            kept.push_back(each);
        }
    }
    return kept;
}

bool isSame(const Arrangement& a, const Arrangement& b) {
    return std::is_permutation(a.begin(), a.end(), b.begin(), b.end());
}

/// Whether the displays that are on stand as those of `all` do with gaps closed: then nobody
/// but us has moved anything since.
bool isInForce(const Layout& layout, const Arrangement& all) {
    return !all.empty() && isSame(withoutGaps(present(layout, all, 0)), arrangementOf(layout));
}

/// The remembered arrangements that are in force, latest first.
std::vector<Arrangement> arrangementsInForce(const Layout& layout, const Memory& memory) {
    std::vector<Arrangement> inForce;
    for (auto each = memory.rbegin(); each != memory.rend(); ++each) {
        if (isInForce(layout, each->arrangement)) {
            inForce.push_back(each->arrangement);
        }
    }
    return inForce;
}

/// As it would be if whatever is off for the moment had left its gap; as it is where somebody
/// has moved things since.
Arrangement arrangementNow(const Layout& layout, const Memory& memory) {
    const std::vector<Arrangement> inForce = arrangementsInForce(layout, memory);
    return inForce.empty() ? arrangementOf(layout) : inForce.front();
}

/// `arrangement`, with what is known of the displays otherwise: what those that are on show,
/// and of `display` what `comesOn` says.
std::optional<WholeLayout> toWholeLayout(const Layout& layout, Arrangement arrangement,
                                         DisplayID display, const std::optional<Shown>& comesOn,
                                         DisplayID primary) {
    arrangement = withoutGaps(std::move(arrangement));
    WholeLayout whole{.primary = primary};
    for (const Output& output : layout.outputs) {
        if (!output.isConnected) {
            continue;
        }
        std::optional<Shown> shown = output.display == display ? comesOn : output.shown;
        if (shown.has_value()) {
            shown->area = find(arrangement, output.display)->area;
            if (!layout.hasRoomFor(shown->area)) {
                return std::nullopt;
            }
        }
        whole.places.push_back({output.display, std::move(shown)});
    }
    return whole;
}

/// Of those that are on, but for `display`, who has the role; else who is nearest to the origin.
DisplayID primaryOf(const Layout& layout, DisplayID display) {
    const Output* primary = layout.output(layout.primary.value_or(0));
    if (primary != nullptr && primary->isActive() && primary->display != display) {
        return primary->display;
    }
    Layout open = layout;
    open.primary = display;
    return nextPrimary(open, display).value_or(0);
}

DisplayID primaryWith(const Layout& layout, DisplayID display, const Memory& memory) {
    Layout open = layout;
    open.primary = primaryOf(layout, display);
    return open.primary == DisplayID{0} || regainsPrimary(open, display, memory) ? display
                                                                                 : *open.primary;
}

/// The arrangement it comes back into as it was; empty when there is none any more.
Arrangement arrangementWith(const Layout& layout, DisplayID display, const RememberedOutput& was,
                            Memory memory) {
    // Its own is tried first.
    memory.push_back(was);
    for (const Arrangement& all : arrangementsInForce(layout, memory)) {
        const Standing* its = find(all, display);
        if (its != nullptr && its->area.width == was.area.width &&
            its->area.height == was.area.height) {
            return present(layout, all, display);
        }
    }
    return {};
}

bool hasSizeOf(const Layout& layout, const Shown& shown) {
    const Area area = layout.areaOf(shown.mode, shown.rotation, shown.scale);
    return area.width == shown.area.width && area.height == shown.area.height;
}

std::optional<Shown> shownAsItWas(const Layout& layout, const RememberedOutput& was) {
    const std::vector<Mode>& modes = layout.output(was.display)->modes;
    const auto mode = std::find(modes.begin(), modes.end(), was.mode);
    if (mode == modes.end() || !offersScale(*mode, was.scale)) {
        return std::nullopt;
    }
    return Shown{.mode = *mode, .area = was.area, .rotation = was.rotation, .scale = was.scale};
}

}  // namespace

std::optional<Shown> WholeLayout::shown(DisplayID display) const {
    const auto found = std::find_if(places.begin(), places.end(),
                                    [&](const Place& each) { return each.display == display; });
    return found == places.end() ? std::nullopt : found->shown;
}

WholeLayout wholeOf(const Layout& layout) {
    WholeLayout whole{.primary = layout.primary.value_or(0)};
    for (const Output& output : layout.outputs) {
        whole.places.push_back({output.display, output.shown});
    }
    return whole;
}

std::optional<WholeLayout> withoutDisplay(const Layout& layout, DisplayID display,
                                          const Memory& memory) {
    if (isLastShown(layout, display)) {
        return std::nullopt;
    }
    // From how all stood, not from how the rest closed up: so each way of switching several off
    // ends alike, and is known again when they come back.
    Arrangement others = without(arrangementNow(layout, memory), display);
    return toWholeLayout(layout, present(layout, others, 0), display, std::nullopt,
                         primaryOf(layout, display));
}

std::vector<WholeLayout> withDisplay(const Layout& layout, DisplayID display,
                                     const Memory& memory) {
    std::vector<WholeLayout> whole;
    const DisplayID primary = primaryWith(layout, display, memory);
    const auto add = [&](Arrangement arrangement, const Shown& shown) {
        auto way =
            toWholeLayout(layout, std::move(arrangement), display, std::optional(shown), primary);
        if (hasSizeOf(layout, shown) && way.has_value() &&
            std::find(whole.begin(), whole.end(), *way) == whole.end()) {
            whole.push_back(*std::move(way));
        }
    };
    if (const RememberedOutput* was = layout::find(memory, display); was != nullptr) {
        const std::optional<Shown> shown = shownAsItWas(layout, *was);
        Arrangement arrangement = arrangementWith(layout, display, *was, memory);
        if (shown.has_value() && !arrangement.empty()) {
            add(std::move(arrangement), *shown);
        }
    }
    for (const WayBack& way : waysBack(layout, display, memory)) {
        Arrangement arrangement = without(arrangementOf(layout), display);
        arrangement.push_back({display, way.shown.area});
        add(std::move(arrangement), way.shown);
    }
    return whole;
}

RememberedOutput describeInWhole(const Layout& layout, DisplayID display, const Memory& memory) {
    RememberedOutput now = describe(layout, display, memory);
    const Arrangement arrangement = arrangementNow(layout, memory);
    // What is unplugged by now has no place to return to.
    std::copy_if(arrangement.begin(), arrangement.end(), std::back_inserter(now.arrangement),
                 [&](const Standing& each) {
                     const Output* output = layout.output(each.display);
                     return output != nullptr && output->isConnected;
                 });
    return now;
}

}  // namespace tavrel::layout
