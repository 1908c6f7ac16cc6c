#pragma once

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/gnome/DisplayConfig.h"

namespace tavrel::gnome {

/// A compositor whose state tests set, and which takes layouts as long as they do not say
/// otherwise.
class SimulatedDisplayConfig final : public DisplayConfig {
public:
    /// A monitor of 1920x1080, which is off.
    Monitor& add(const std::string& connector) {
        Monitor monitor{.connector = connector, .vendor = "ABC", .product = "M", .serial = "1"};
        monitor.modes = {{"1920x1080@60", {1920, 1080, 60000, {}, {1, 2}}},
                         {"1280x1024@60", {1280, 1024, 60000, {}, {1}}}};
        state.monitors.push_back(monitor);
        return state.monitors.back();
    }
    /// The one added last is on, in its preferred mode.
    void show(int x, bool isPrimary = false) {
        Monitor& monitor = state.monitors.back();
        monitor.currentMode = 0;
        state.logicalMonitors.push_back(
            {.x = x, .isPrimary = isPrimary, .monitors = {monitor.connector}});
    }

    Reading read() override {
        ++reads;
        beforeRead();
        return readReply == Reply::done ? Reading{Reply::done, state} : Reading{readReply, {}};
    }
    bool isAllowed() override { return allowed; }
    Reply apply(const Configuration& configuration, Method method) override {
        applied.emplace_back(configuration, method);
        const Reply reply =
            configuration.serial == state.serial ? verdict(configuration) : Reply::denied;
        if (reply == Reply::done && method == Method::temporary) {
            take(configuration);
        }
        return reply;
    }

    bool isOn(const std::string& connector) const {
        return std::any_of(state.logicalMonitors.begin(), state.logicalMonitors.end(),
                           [&](const LogicalMonitor& each) {
                               return std::find(each.monitors.begin(), each.monitors.end(),
                                                connector) != each.monitors.end();
                           });
    }
    DisplayID idOf(const std::string& connector) const {
        const layout::Layout layout = layoutOf(state);
        for (const layout::Output& output : layout.outputs) {
            if (output.identity.connector == connector) {
                return output.display;
            }
        }
        return 0;
    }
    void switchOff(const std::string& connector) {
        std::erase_if(state.logicalMonitors, [&](const LogicalMonitor& each) {
            return each.monitors == std::vector{connector};
        });
    }

    MonitorState state{.serial = 7};
    Reply readReply = Reply::done;
    bool allowed = true;
    /// What becomes of a layout that is made for the hardware there is.
    std::function<Reply(const Configuration&)> verdict = [](const auto&) { return Reply::done; };
    std::function<void()> beforeRead = [] {};
    int reads = 0;
    std::vector<std::pair<Configuration, Method>> applied;

private:
    void take(const Configuration& configuration) {
        state.logicalMonitors.clear();
        for (Monitor& monitor : state.monitors) {
            monitor.currentMode.reset();
        }
        for (const LogicalSetting& each : configuration.logicalMonitors) {
            LogicalMonitor logical{each.x, each.y, each.scale, each.transform, each.isPrimary, {}};
            for (const MonitorSetting& setting : each.monitors) {
                logical.monitors.push_back(setting.connector);
                setMode(setting);
            }
            state.logicalMonitors.push_back(std::move(logical));
        }
    }
    void setMode(const MonitorSetting& setting) {
        for (Monitor& monitor : state.monitors) {
            for (std::size_t i = 0; i < monitor.modes.size(); ++i) {
                if (monitor.connector == setting.connector &&
                    monitor.modes[i].id == setting.modeId) {
                    monitor.currentMode = i;
                }
            }
        }
    }
};

}  // namespace tavrel::gnome
