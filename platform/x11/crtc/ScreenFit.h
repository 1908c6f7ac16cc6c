#pragma once

#include "platform/layout/Layout.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// The smallest part of the screen from its origin that holds `with`, and every CRTC that drives a
/// connected output but `without`.
layout::Area boundsOfActive(const Snapshot& snapshot, Xid without = 0,
                            const layout::Area& with = {});

/// Sets the plan's screen sizes for a change after which `needed` holds all that is seen:
/// grown before it where it must be, shrunk after it where it fitted the CRTCs tightly before.
/// A screen that someone keeps larger than its CRTCs is not shrunk. What drives nobody's
/// monitor and would not fit any more goes off. Millimetres follow the pixels, except that
/// `known` is used where it has the pixels, and followed where the screen is too small to tell.
void fitScreen(const Snapshot& snapshot, const layout::Area& needed, const ScreenSize& known,
               LayoutPlan& plan);

}  // namespace tavrel::x11
