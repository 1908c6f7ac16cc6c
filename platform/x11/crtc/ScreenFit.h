#pragma once

#include "platform/layout/Area.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// The smallest part of the screen from its origin that holds every active CRTC but
/// `without`, and `with`.
layout::Area boundsOfActive(const Snapshot& snapshot, Xid without = 0,
                            const layout::Area& with = {});

/// Sets the plan's screen sizes for a change after which `needed` holds every active CRTC:
/// grown before it where it must be, shrunk after it where it fitted the active CRTCs
/// tightly before. A screen that someone keeps larger than its CRTCs is not shrunk.
/// Millimetres follow the pixels, except that `known` is used where it has the pixels.
void fitScreen(const Snapshot& snapshot, const layout::Area& needed, const ScreenSize& known,
               LayoutPlan& plan);

}  // namespace tavrel::x11
