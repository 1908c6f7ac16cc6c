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

/// The monitor's maker, in the three letters it has registered, and what the maker calls the
/// model: "ACM 27U", or "ACM 1A2B" by its number where it has no name. For people. Empty where
/// `parseEdid` reads nothing.
std::string monitorName(const std::vector<std::uint8_t>& edid);

/// A connector, and the numbers of the monitor that is connected to it: all 0 when none is.
struct Identity {
    std::string connector;
    EdidNumbers edid;

    friend bool operator==(const Identity&, const Identity&) = default;
};

/// A monitor that was given a number, and the connector it was last seen at.
struct KnownMonitor {
    Identity identity;
    DisplayID display = 0;

    friend bool operator==(const KnownMonitor&, const KnownMonitor&) = default;
};

/// In the order in which they were met.
using KnownMonitors = std::vector<KnownMonitor>;

using IdentityHash = std::function<std::uint32_t(std::string_view)>;

/// FNV-1a. The numbers it gives are stored by users, so it must never change.
std::uint32_t stableHash(std::string_view bytes);

struct Identification {
    /// The number of each output, in the order of the outputs. Never 0, no two alike.
    std::vector<DisplayID> displays;
    /// What was known before, and the monitors that were met or have moved.
    KnownMonitors known;
};

/// Who is who. `outputs` are all there are, connected or not; their order makes no difference.
///
/// A monitor is told by its EDID's numbers for as long as no other with the same was seen beside
/// it: then it is the same display at every connector. Of monitors with the same numbers, each is
/// told by its connector too, from then on and for good, however many of them are there. A
/// monitor without an EDID is its connector, and so is a connector without a monitor; but a panel
/// is wired to its connector, so one that keeps its EDID to itself is the one known there, and it
/// is never taken for a monitor that has the same numbers.
///
/// Once given, a number stays. A monitor met for the first time gets the one that version 0.1
/// gave to every monitor at that connector, so that what was stored under it stays its own.
Identification identify(const std::vector<Identity>& outputs, const KnownMonitors& known,
                        const IdentityHash& hash = stableHash);

/// Whether a connector of this name is wired to the machine's own panel.
bool isBuiltInConnector(std::string_view name);

}  // namespace tavrel::layout
