#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "platform/DisplayID.h"

namespace tavrel {

/// What the window server says of its displays, for as long as one pass over them lasts.
///
/// A server that is asked as a whole answers everything here by one look at it, taken when
/// this was made. One that is asked display by display is asked anew with each call, in the
/// order of the calls. So whoever has changed the layout asks for another moment.
///
/// To be used by one thread at a time. No call throws. A display the server does not know
/// (any more) is not built in, not online, not active, and has vendor, model and serial
/// number 0.
class DisplayMoment {
public:
    virtual ~DisplayMoment() = default;

    /// Every display that is connected, also those taken out of the desktop layout, in the
    /// server's order and possibly with entries that stand for no display. std::nullopt where
    /// there is no such list.
    virtual std::optional<std::vector<DisplayID>> allDisplays() = 0;

    /// The displays that are online, in the server's order. std::nullopt when the server
    /// cannot say.
    virtual std::optional<std::vector<DisplayID>> onlineDisplays() = 0;

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

/// The window server's public side. Thread-safe.
class DisplayQueries {
public:
    virtual ~DisplayQueries() = default;

    /// Returns the answers as of now. Never null: of a server that is gone, they are those of
    /// one that knows no display. The queries must outlive what they return.
    virtual std::unique_ptr<DisplayMoment> now() = 0;
};

}  // namespace tavrel
