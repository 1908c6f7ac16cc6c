#pragma once

#include <cstdint>
#include <vector>

#include "platform/layout/Identity.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// The bytes of a reply; those of which all are needed, without padding at the end.
using Reply = std::vector<std::uint8_t>;

// What a server says of these, as RandR lays it out. The readers must understand them.

/// The reply to GetScreenResources: numbers, modes, times.
Reply resourcesReply(const Snapshot& snapshot);
Reply crtcInfoReply(const Crtc& crtc);
/// The transform in force, and the next one, are both that of `crtc`.
Reply crtcTransformReply(const Crtc& crtc);
Reply outputInfoReply(const Output& output);
/// The reply to GetOutputProperty for an EDID with these numbers.
Reply edidReply(const layout::EdidNumbers& numbers);
/// The first block of such an EDID.
std::vector<std::uint8_t> edidBlock(const layout::EdidNumbers& numbers);

}  // namespace tavrel::x11
