#pragma once

#include <optional>

#include "platform/layout/Layout.h"
#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What a CRTC is to be told so that an output comes on.
struct CrtcChoice {
    CrtcSetting setting;
    /// Set where the CRTC must be given another transform first.
    std::optional<CrtcTransform> transform = {};
};

/// How `output`, which is off, can show `wanted`: by a running CRTC that shows just that, if
/// the outputs can share it, or by one that drives nothing; of these its old one first.
/// `notes` say which those are, and the transform. std::nullopt when there is no such CRTC.
std::optional<CrtcChoice> chooseCrtc(const Snapshot& snapshot, const Output& output,
                                     const layout::Shown& wanted, const CrtcNotes& notes);

}  // namespace tavrel::x11
