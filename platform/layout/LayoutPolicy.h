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

// Whose the primary role is, by an example. A, B and C are on, and A is primary.
//
// - A goes off and is remembered as `primary`. B has the role meanwhile, on loan from A.
// - B goes off and is remembered as `primary` and `primaryOnLoan`. C has the role.
// - B comes on first: it has the role again, as A is still off. Then A comes on and takes it.
// - Or A comes on first and takes the role. Then B comes on without it: the loan is over.
//
// When another program switches A off, nobody is told; it shows in the next layout that is seen,
// and there B is primary. A window server that `keepsPrimaryOn` has moved the role by itself: so A
// is still its owner, and B has it on loan. Any other would have left it with A, on or off: so
// somebody has given the role to B, and A is not `primary` any more.

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
/// it was, then not turned. When nothing is shown, no mode is left out. Empty when it has no
/// mode, or there is no room.
std::vector<WayBack> waysBack(const Layout& layout, DisplayID display, const Memory& memory);

}  // namespace tavrel::layout
