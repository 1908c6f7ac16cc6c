#pragma once

#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/crtc/LayoutServer.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// Carries out `plan`, which was made for the layout `before`, and checks that the server
/// now shows just that. When it does not, or refused a request on the way, puts the layout
/// back as it was and returns false. The server is to be grabbed meanwhile.
bool applyPlan(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan);

}  // namespace tavrel::x11
