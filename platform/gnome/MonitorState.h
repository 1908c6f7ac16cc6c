#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/layout/Layout.h"

namespace tavrel::gnome {

/// A mode, and the name it has on the bus.
struct MonitorMode {
    std::string id;
    layout::Mode mode = {};

    friend bool operator==(const MonitorMode&, const MonitorMode&) = default;
};

/// What is said to the monitor beside the mode, and has to be said again each time.
struct MonitorSettings {
    bool isUnderscanning = false;
    std::optional<std::uint32_t> colorMode = {};
    std::optional<std::uint32_t> rgbRange = {};

    friend bool operator==(const MonitorSettings&, const MonitorSettings&) = default;
};

struct Monitor {
    std::string connector;
    std::string vendor;
    std::string product;
    std::string serial;
    /// In the compositor's order, the preferred one first.
    std::vector<MonitorMode> modes = {};
    /// The index of the mode it shows.
    std::optional<std::size_t> currentMode = {};
    bool isBuiltIn = false;
    MonitorSettings settings = {};

    friend bool operator==(const Monitor&, const Monitor&) = default;
};

/// A part of the desktop, and the monitors that show it.
struct LogicalMonitor {
    int x = 0;
    int y = 0;
    double scale = 1;
    /// 0 to 3 quarter turns; and 4, if it is mirrored before.
    std::uint32_t transform = 0;
    bool isPrimary = false;
    /// Their connectors.
    std::vector<std::string> monitors = {};

    friend bool operator==(const LogicalMonitor&, const LogicalMonitor&) = default;
};

/// What the compositor says of its monitors at one moment. Plain data.
struct MonitorState {
    /// Changes with the hardware, and not with the layout.
    std::uint32_t serial = 0;
    std::vector<Monitor> monitors = {};
    std::vector<LogicalMonitor> logicalMonitors = {};
    /// As the bus has it: 1 when a scale makes areas smaller, 2 when all are in pixels.
    std::uint32_t layoutMode = 1;
    bool canChangeLayoutMode = false;
    /// Not the compositor's: the monitors met before, which say what display each is.
    layout::KnownMonitors known = {};

    /// Null when there is no such monitor.
    const Monitor* monitor(const std::string& connector) const;

    friend bool operator==(const MonitorState&, const MonitorState&) = default;
};

/// Who is connected where, in the state's order. Each word by which the compositor calls a monitor
/// stands for a number: the one that the monitor gave where that was told, else one made of the
/// word.
std::vector<layout::Identity> identitiesIn(const MonitorState& state);

/// `state` in the words common to all window servers. A display is a monitor; all are
/// connected, in the state's order.
layout::Layout layoutOf(const MonitorState& state);

}  // namespace tavrel::gnome
