#pragma once

#include <vector>

#include "platform/layout/Layout.h"
#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What CRTCs are to be told so that an output comes on.
struct CrtcChoice {
    /// To be set first.
    std::vector<CrtcTransform> transforms = {};
    /// In this order. The last is the output's own; those before it move the pictures of
    /// others to other CRTCs.
    std::vector<CrtcSetting> settings = {};
};

/// How `output`, which is off, can show `wanted`, best first: by a running CRTC that shows just
/// that, if the outputs can share it, or by a free one, of these its old one first. `notes`
/// say which those are, and the transform. Where there is neither, a CRTC is made free whose
/// picture another one can show. Empty when that cannot be either.
std::vector<CrtcChoice> crtcChoices(const Snapshot& snapshot, const Output& output,
                                    const layout::Shown& wanted, const CrtcNotes& notes);

}  // namespace tavrel::x11
