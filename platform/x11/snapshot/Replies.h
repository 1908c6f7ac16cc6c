#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// The bytes of one of RandR's replies, all of it; empty where there was none.
using ReplyBytes = std::span<const std::uint8_t>;

// What the replies say that have lists in them. The counts in a reply are the server's word
// and may be false: one that tells of more than it holds is refused, and nothing beyond the
// bytes is ever read. Pure functions. After a refusal, what was to be filled in is as it was.
// The layouts are those of the RandR protocol, version 1.3.

/// What there is, by number, with the modes: from GetScreenResources, or ...Current.
std::optional<Snapshot> readResources(ReplyBytes reply);

/// From GetCrtcInfo: how it is set. False also when the server said that it has changed.
bool readCrtcInfo(ReplyBytes reply, Crtc& crtc);

/// From GetCrtcTransform: how it scales. REQUIRES: its mode has been read.
bool readCrtcTransform(ReplyBytes reply, Crtc& crtc);

/// From GetOutputInfo: all but the EDID. One that may or may not be connected counts as
/// connected while it is driven. False also when the server said that it has changed.
bool readOutputInfo(ReplyBytes reply, Output& output);

/// From GetOutputProperty: the EDID; one that is not made of bytes says nothing.
bool readOutputEdid(ReplyBytes reply, Output& output);

}  // namespace tavrel::x11
