#pragma once

#include <string>
#include <utility>

#include "platform/DisplayID.h"
#include "platform/DisplayQueries.h"

namespace tavrel {

/// One display as it is listed, shown and switched. A plain value; two devices with the
/// same `id` are the same physical display, whatever else differs.
class DisplayDevice {
public:
    /// In the order in which kinds are listed.
    enum class Kind { builtIn, external };

    DisplayDevice(DisplayID displayID, std::string name, Kind kind, bool initiallyOn)
        : isOn(initiallyOn),
          id_(std::to_string(displayID)),
          displayID_(displayID),
          name_(std::move(name)),
          kind_(kind) {}

    /// The identifier in plain decimal, by which lists identify their rows.
    const std::string& id() const { return id_; }
    /// The number passed to every platform call about this display.
    DisplayID displayID() const { return displayID_; }
    /// The label shown to the user.
    const std::string& name() const { return name_; }
    Kind kind() const { return kind_; }

    /// Whether it was part of the desktop layout when it was listed or last switched.
    bool isOn = false;
    /// Whether a switch of this display is in progress.
    bool isBusy = false;

    /// Which of the user's monitors it is, as far as that was known when it was listed.
    DisplayHardware hardware = {};

private:
    std::string id_;
    DisplayID displayID_;
    std::string name_;
    Kind kind_;
};

}  // namespace tavrel
