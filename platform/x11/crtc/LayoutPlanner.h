#pragma once

#include <optional>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/RememberedOutput.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What one switch comes to.
struct LayoutDecision {
    /// When not success, the switch is refused and nothing is to be changed.
    ServerStatus status = serverStatus::success;
    /// Empty when the display is as it should be already.
    LayoutPlan plan = {};
    /// What is to be remembered once the plan has been carried out; the same as before
    /// when the plan is empty.
    std::vector<RememberedOutput> remembered = {};
};

/// Decides how `display` is taken out of the layout, or brought back into it, given what is
/// remembered of displays switched off before. Pure: asks no server.
///
/// The rest of the layout stays where it is, and no active CRTC is ever left outside the
/// screen. A display comes back as it was as long as its mode, its place and a CRTC are
/// still there, else with its preferred mode, right of the rightmost one.
LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, bool enabled,
                            const std::vector<RememberedOutput>& remembered);

}  // namespace tavrel::x11
