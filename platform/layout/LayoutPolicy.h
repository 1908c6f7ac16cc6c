#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/layout/RememberedOutputs.h"

namespace tavrel::layout {

// What is decided alike with every window server when a display goes off or comes on: it
// reads its state into a layout, asks here, and does what comes out. Pure functions.

/// Whether no connected output shows anything: there is no usable screen.
bool isNothingShown(const Layout& layout);

/// Whether no other connected output shows anything, so that `display` must stay on.
bool isLastShown(const Layout& layout, DisplayID display);

/// How `display`, which is on, is set up: what is to be remembered of it when it goes off,
/// but for the notes of the window server. `memory` tells whose the primary role is.
RememberedOutput describe(const Layout& layout, DisplayID display, const Memory& memory);

/// Who becomes primary when `display` goes off: of the others that are on, the one nearest to
/// the origin, where a desktop usually begins. std::nullopt when the role stays where it is,
/// or there is no other.
std::optional<DisplayID> nextPrimary(const Layout& layout, DisplayID display);

/// Whether `display` becomes primary when it comes on: when it was, and either the role is
/// its own or the one it had it from is still off.
bool regainsPrimary(const Layout& layout, DisplayID display, const Memory& memory);

struct WayBack {
    Shown shown = {};
    bool isAsItWas = false;

    friend bool operator==(const WayBack&, const WayBack&) = default;
};

/// In how many modes a display is tried while another one is there to be used.
inline constexpr std::size_t mostModesBesideOthers = 8;

/// How `display`, which is off, can come on, in order of preference; the window server takes
/// the first it can realise.
///
/// First as it was: with the remembered mode in the remembered place, if the monitor still
/// offers the one at its scale, and none but its old mirrors has taken the other. The only monitor
/// left, which nobody can stand beside, goes to the origin instead. Then anew, right of the
/// rightmost display and level with it: in the mode it had, in its preferred one and, since
/// that may be more than the wire or the graphics card can do today, in the others; turned as
/// it was, then upright. When nothing is shown, no mode is left out. Empty when it has no
/// mode, or there is no room.
std::vector<WayBack> waysBack(const Layout& layout, DisplayID display, const Memory& memory);

}  // namespace tavrel::layout
