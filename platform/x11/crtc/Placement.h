#pragma once

#include <map>
#include <optional>

#include "platform/DisplayID.h"
#include "platform/layout/RememberedOutput.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// Where and how an output that is off can come on.
struct Placement {
    CrtcSetting setting;
    /// Set where the CRTC must be given another transform first.
    std::optional<CrtcTransform> transform = {};
    Area area = {};
};

/// As it was: with the remembered mode, in the remembered place, which nothing but its old
/// mirrors may have taken meanwhile. Nothing when the mode, the place or a CRTC for it is
/// no longer there.
std::optional<Placement> placeAsRemembered(const Snapshot& snapshot, const Output& output,
                                           const std::map<Xid, DisplayID>& identifiers,
                                           const RememberedOutput& was);

/// With its preferred mode, right of the rightmost active output and level with it; turned
/// as it was, if that is remembered (`was` may be null) and the CRTC can. Nothing when it
/// has no mode, there is no free CRTC, or the place leaves the server's limits.
std::optional<Placement> placeAnew(const Snapshot& snapshot, const Output& output,
                                   const RememberedOutput* was);

}  // namespace tavrel::x11
