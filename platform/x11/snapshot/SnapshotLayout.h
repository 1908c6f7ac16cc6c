#pragma once

#include "platform/DisplayID.h"
#include "platform/layout/Layout.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What `snapshot` shows, in the words common to all window servers. A display is an output;
/// it is on when a CRTC drives it with a mode. The outputs are in the snapshot's order.
layout::Layout layoutOf(const Snapshot& snapshot);

/// The output in `snapshot` that is this display in its layout; null when there is none.
const Output* outputOf(const Snapshot& snapshot, const layout::Layout& layout, DisplayID display);

}  // namespace tavrel::x11
