#pragma once

#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/LastSeen.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What one switch comes to.
struct LayoutDecision {
    /// When not success, the switch is refused and nothing is to be changed.
    ServerStatus status = serverStatus::success;
    /// In order of preference: the first that the server carries out is enough. Empty when
    /// the display is as it should be already.
    std::vector<LayoutPlan> plans = {};
    /// What is to be remembered once a plan has been carried out, or at once when there is
    /// none: then, the same as before, unless the display is on that was to come on.
    layout::Memory memory = {};
};

/// Turns what the layout's policy says of `display` into what the server is to be told, given
/// what is remembered of displays switched off before, and how each was seen last. Pure: asks
/// no server.
///
/// The rest of the layout stays where it is, and no CRTC that is on is ever left outside the
/// screen.
LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, bool enabled,
                            const layout::Memory& memory, const layout::LastSeen& lastSeen);

}  // namespace tavrel::x11
