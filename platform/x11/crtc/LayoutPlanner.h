#pragma once

#include "platform/DisplayID.h"
#include "platform/layout/RememberedOutputs.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

enum class Wanted {
    off,
    on,
    /// On, but not as it was: the server has refused that.
    onAnew
};

/// What one switch comes to.
struct LayoutDecision {
    /// When not success, the switch is refused and nothing is to be changed.
    ServerStatus status = serverStatus::success;
    /// Empty when the display is as it should be already.
    LayoutPlan plan = {};
    /// What is to be remembered once the plan has been carried out; the same as before
    /// when the plan is empty.
    layout::Memory memory = {};
};

/// Turns what the layout's policy says of `display` into what the server is to be told, given
/// what is remembered of displays switched off before. Pure: asks no server.
///
/// The rest of the layout stays where it is, and no active CRTC is ever left outside the
/// screen.
LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, Wanted wanted,
                            const layout::Memory& memory);

}  // namespace tavrel::x11
