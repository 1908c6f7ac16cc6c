#pragma once

#include <cstdint>
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

/// How a question or a request has ended.
enum class Reply {
    done,
    /// It was made for hardware that has changed since, or may not be made at all.
    denied,
    refused,
    /// There is no such service, or it offers no such thing.
    absent,
    /// No answer has come. It may have been done, or may be still.
    none,
};

/// Where a compositor is asked for its monitors, and told how to use them. For one thread.
class DisplayConfig {
public:
    virtual ~DisplayConfig() = default;

    struct Reading {
        Reply reply = Reply::none;
        /// std::nullopt unless done.
        std::optional<MonitorState> state = {};
    };

    virtual Reading read() = 0;

    /// Whether layouts may be changed by programs. True where nothing is said about it.
    virtual bool isAllowed() = 0;

    enum class Method {
        /// Says what would become of it.
        verify = 0,
        /// Until the session ends, or somebody changes it. There is another, which asks the user
        /// and waits: not for a program that must not depend on what the user sees.
        temporary = 1,
    };

    virtual Reply apply(const Configuration& configuration, Method method) = 0;
};

}  // namespace tavrel::gnome
