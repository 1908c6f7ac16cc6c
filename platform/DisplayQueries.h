#pragma once

#include "platform/DisplayID.h"

namespace tavrel {

/// The window server's public answers about its displays, asked live each time.
///
/// Thread-safe: every call may come from any thread. No call throws. A display the
/// server does not know (any more) is not built in, not online, not active, and has
/// vendor, model and serial number 0.
class DisplayQueries {
public:
    virtual ~DisplayQueries() = default;

    /// Fills `displays` with at most `maxCount` identifiers of the displays that are
    /// online and sets `count` to how many were written; with `displays` null only
    /// `count` is set, to how many there are. Returns 0 or the server's status; after
    /// a failure neither output may be relied on.
    virtual ServerStatus getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                              std::uint32_t* count) = 0;

    /// Whether this is the machine's own panel.
    virtual bool isBuiltIn(DisplayID display) = 0;
    /// Whether the display is connected and the server counts it among its displays.
    virtual bool isOnline(DisplayID display) = 0;
    /// Whether the display shows part of the desktop.
    virtual bool isActive(DisplayID display) = 0;

    virtual std::uint32_t vendorNumber(DisplayID display) = 0;
    virtual std::uint32_t modelNumber(DisplayID display) = 0;
    virtual std::uint32_t serialNumber(DisplayID display) = 0;
};

}  // namespace tavrel
