#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayID.h"

namespace tavrel {

/// What tells a display from others for people. Each is empty where nothing is known.
struct DisplayHardware {
    /// The monitor's maker and model.
    std::string monitor = {};
    /// What the window server calls the connector.
    std::string connector = {};

    friend bool operator==(const DisplayHardware&, const DisplayHardware&) = default;
};

/// The window server's answers about its displays, for one pass over them.
///
/// Where the server reports its whole state at once, all answers come from one snapshot,
/// taken when the moment was created. Where it answers display by display, each call asks it
/// again. So ask for a new moment after each change of the layout.
///
/// For one thread at a time. No call throws. A display the server does not know (any more)
/// is not built in, not online, not active, and has vendor, model and serial number 0.
class DisplayMoment {
public:
    virtual ~DisplayMoment() = default;

    /// Whether the answers are as of the time the moment was asked for. False when the server
    /// was silent then, and these are the ones it gave before: no ground for a change of the
    /// layout, nor for taking one to have happened.
    virtual bool isCurrent() { return true; }

    /// Every connected display, including those taken out of the desktop layout, in the
    /// server's order and possibly with entries that are not displays. std::nullopt when the
    /// system has no such list.
    virtual std::optional<std::vector<DisplayID>> allDisplays() = 0;

    /// The displays that are online, in the server's order. std::nullopt when the server
    /// cannot say.
    virtual std::optional<std::vector<DisplayID>> onlineDisplays() = 0;

    /// Whether this is the machine's own panel.
    virtual bool isBuiltIn(DisplayID display) = 0;
    /// Whether the display is connected and in the server's list of online displays.
    virtual bool isOnline(DisplayID display) = 0;
    /// Whether the display shows part of the desktop.
    virtual bool isActive(DisplayID display) = 0;

    virtual std::uint32_t vendorNumber(DisplayID display) = 0;
    virtual std::uint32_t modelNumber(DisplayID display) = 0;
    virtual std::uint32_t serialNumber(DisplayID display) = 0;

    /// Empty where the server does not tell.
    virtual DisplayHardware hardware(DisplayID /*display*/) { return {}; }
};

/// Where the window server is asked about its displays. Thread-safe.
class DisplayQueries {
public:
    virtual ~DisplayQueries() = default;

    /// Returns the answers as of now. Never null: when the server is gone, it is a moment that
    /// knows no display. Must not outlive this object.
    virtual std::unique_ptr<DisplayMoment> now() = 0;

    /// As `now`, for whoever asks each second whether all is well: what showed a fraction of a
    /// second ago may be the answer, if somebody could see something then. Whoever has changed the
    /// layout asks for `now`.
    virtual std::unique_ptr<DisplayMoment> lately() { return now(); }

    /// As `now`, but a server that answers from memory looks for monitors anew first. That can
    /// take seconds, in which it serves nobody: for when the user asks what there is, and not on
    /// the main thread.
    virtual std::unique_ptr<DisplayMoment> nowAfterProbing() = 0;
};

}  // namespace tavrel
