#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/DisplayID.h"

namespace tavrel::layout {

/// The numbers by which a monitor tells itself from others; each 0 where it says nothing.
struct EdidNumbers {
    std::uint32_t vendor = 0;
    std::uint32_t product = 0;
    std::uint32_t serial = 0;

    friend bool operator==(const EdidNumbers&, const EdidNumbers&) = default;
};

/// Reads them from the bytes of an EDID. All 0 when these are not one, or are damaged: a
/// number read wrongly would make the monitor a stranger.
EdidNumbers parseEdid(const std::vector<std::uint8_t>& bytes);

/// What tells one monitor at one connector from all others.
struct Identity {
    std::string connector;
    EdidNumbers edid;

    friend bool operator==(const Identity&, const Identity&) = default;
};

using IdentityHash = std::function<std::uint32_t(std::string_view)>;

/// FNV-1a. The numbers it gives are stored by users, so it must never change.
std::uint32_t stableHash(std::string_view bytes);

/// The number of each output, in the order of `outputs`, which are all there are, connected
/// or not. Never 0, no two alike, and the same for the same monitor at the same connector
/// each time, in whatever order the window server lists its outputs.
std::vector<DisplayID> displayIdentifiers(const std::vector<Identity>& outputs,
                                          const IdentityHash& hash = stableHash);

/// Whether a connector of this name is wired to the machine's own panel.
bool isBuiltInConnector(std::string_view name);

}  // namespace tavrel::layout
