#pragma once

#include "platform/DisplayID.h"
#include "platform/gnome/DisplayConfig.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/RememberedOutputs.h"

namespace tavrel::gnome {

/// Notes how the displays are shown, for the case that another program switches them off.
void noteSeen(layout::LastSeen& lastSeen, const MonitorState& state);

/// Takes `display` out of the layout or brings it back, and returns when a second look has shown
/// that it is. What is remembered of the display is stored before it goes off, so that not even
/// a crash in between loses it. A display that will not come on in one way is tried in others.
///
/// Every layout is applied twice. The compositor keeps the one before, and goes back to that
/// when a lid is opened or a monitor plugged in; after the second time both are the same.
///
/// Returns 0 or a status; after any other than 0, the layout and what is remembered are as
/// they were. But after 1006 the display may have gone off all the same, and what is
/// remembered of it stays.
/// Monitors are taken for those `known`.
ServerStatus switchDisplay(DisplayConfig& config, const layout::KnownMonitors& known,
                           layout::RememberedOutputs& remembered, layout::LastSeen& lastSeen,
                           DisplayID display, bool enabled);

}  // namespace tavrel::gnome
