#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string_view>

#include "platform/DisplayID.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

using IdentifierHash = std::function<std::uint32_t(std::string_view)>;

/// FNV-1a. The numbers it gives are stored by users, so it must never change.
std::uint32_t stableHash(std::string_view bytes);

/// The number of every output, connected or not: never 0, no two alike, and the same for
/// the same monitor at the same connector each time, in whatever order the server lists
/// its outputs and whatever numbers it gives them.
std::map<Xid, DisplayID> displayIdentifiers(const Snapshot& snapshot,
                                            const IdentifierHash& hash = stableHash);

/// The connected output that is this display; null when there is none.
const Output* connectedOutput(const Snapshot& snapshot, DisplayID display);

/// Whether a connector of this name is wired to the machine's own panel.
bool isBuiltInConnector(std::string_view name);

}  // namespace tavrel::x11
