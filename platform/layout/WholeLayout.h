#pragma once

#include <optional>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/layout/RememberedOutputs.h"

namespace tavrel::layout {

// What `LayoutPolicy` decides, for a window server that takes no single changes: it has to be told
// each time what all displays are to show. It accepts no gaps, so the other displays close up when
// one goes off, and make room again when it comes back. Pure functions.

/// What every connected display is to show. The desktop begins at 0,0 and has no gaps; nothing
/// overlaps but what has done so before, and exactly one display that is on is primary.
struct WholeLayout {
    struct Place {
        DisplayID display = 0;
        /// std::nullopt when it is to be off.
        std::optional<Shown> shown = {};

        friend bool operator==(const Place&, const Place&) = default;
    };

    /// In the order of the layout's outputs.
    std::vector<Place> places = {};
    DisplayID primary = 0;

    /// What it is to show; std::nullopt also for one that isn't connected.
    std::optional<Shown> shown(DisplayID display) const;

    friend bool operator==(const WholeLayout&, const WholeLayout&) = default;
};

/// As `layout` is.
WholeLayout wholeOf(const Layout& layout);

/// As `layout` is, with `display` off. std::nullopt when nothing else would be shown.
std::optional<WholeLayout> withoutDisplay(const Layout& layout, DisplayID display,
                                          const Memory& memory);

/// As `layout` is, with `display` on, in order of preference: as it was, and the others with it
/// where they were, if they are now where they went when it left; then the `waysBack`.
/// Empty when it cannot come on.
std::vector<WholeLayout> withDisplay(const Layout& layout, DisplayID display, const Memory& memory);

/// As `describe`, with the arrangement of all: by it, displays that went off one after another
/// return to where they were in whatever order they come back.
RememberedOutput describeInWhole(const Layout& layout, DisplayID display, const Memory& memory);

}  // namespace tavrel::layout
