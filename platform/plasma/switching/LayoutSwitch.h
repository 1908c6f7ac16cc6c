#pragma once

#include "platform/DisplayID.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/plasma/switching/LayoutServer.h"

namespace tavrel::plasma {

/// Notes how the displays in `layout` are shown, for the case that another program switches
/// them off.
void noteSeen(layout::LastSeen& lastSeen, const layout::Layout& layout);

/// Takes `display` out of the layout or brings it back, from the first look at the server to
/// the last check. What is remembered of the display is stored before it goes off, so that not
/// even a crash in between loses it. A display that will not come on in one way is tried in
/// others. Where the connection is lost in the middle, as a hot plug may bring about, all is
/// read and planned again.
///
/// Returns 0 or a status; after any other than 0, the layout and what is remembered are as
/// they were. But after 1006 the display may have gone off all the same, and what is
/// remembered of it stays.
ServerStatus switchDisplay(LayoutServer& server, layout::RememberedOutputs& remembered,
                           layout::LastSeen& lastSeen, DisplayID display, bool enabled);

}  // namespace tavrel::plasma
