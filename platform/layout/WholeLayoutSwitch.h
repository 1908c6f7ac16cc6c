#pragma once

#include "platform/DisplayID.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/layout/WholeLayoutServer.h"

namespace tavrel::layout {

/// Notes how the displays in `layout` are shown, for the case that another program switches
/// them off: for a window server that knows nothing of them beyond their layout.
void noteSeen(LastSeen& lastSeen, const Layout& layout);

/// Takes `display` out of the layout or brings it back, and returns when another look has shown
/// that it is. What is remembered of the display is stored before it goes off, so that not even
/// a crash in between loses it. A display that will not come on in one way is tried in others.
/// Where the hardware or another program has changed what was planned for, or undone it, all is
/// read and planned again, five times at most.
///
/// Returns 0 or a status; after any other than 0, the layout and what is remembered are as
/// they were. But after a 1006 of which the server has said nothing, the display may have gone off
/// all the same, and what is remembered of it stays.
ServerStatus switchDisplay(WholeLayoutServer& server, RememberedOutputs& remembered,
                           LastSeen& lastSeen, DisplayID display, bool enabled);

}  // namespace tavrel::layout
