#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/gnome/MonitorState.h"
#include "platform/layout/WholeLayout.h"

namespace tavrel::gnome {

/// What one monitor is to show.
struct MonitorSetting {
    std::string connector;
    std::string modeId;
    MonitorSettings settings = {};

    friend bool operator==(const MonitorSetting&, const MonitorSetting&) = default;
};

/// What is to be shown in one place.
struct LogicalSetting {
    int x = 0;
    int y = 0;
    double scale = 1;
    std::uint32_t transform = 0;
    bool isPrimary = false;
    std::vector<MonitorSetting> monitors = {};

    friend bool operator==(const LogicalSetting&, const LogicalSetting&) = default;
};

/// A whole layout as the bus takes it. A monitor that isn't mentioned goes off.
struct Configuration {
    /// Of the state that it is made for.
    std::uint32_t serial = 0;
    std::vector<LogicalSetting> logicalMonitors = {};
    /// Only where it may be said.
    std::optional<std::uint32_t> layoutMode = {};

    friend bool operator==(const Configuration&, const Configuration&) = default;
};

/// `whole` in terms of the monitors of `state`, whose layout it was planned for; what these are
/// told beside the mode stays. std::nullopt when something of it isn't there.
std::optional<Configuration> configurationOf(const layout::WholeLayout& whole,
                                             const MonitorState& state);

/// What `state` shows.
std::optional<Configuration> configurationOf(const MonitorState& state);

}  // namespace tavrel::gnome
