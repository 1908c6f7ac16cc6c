#include "platform/gnome/MonitorState.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>

namespace tavrel::gnome {

namespace {

/// Plug and play numbers the makers by three letters of five bits each.
std::uint32_t vendorNumber(std::string_view letters) {
    std::uint32_t number = 0;
    for (const char letter : letters) {
        if (letter < 'A' || letter > 'Z') {
            return 0;
        }
        number = number << 5 | static_cast<std::uint32_t>(letter - 'A' + 1);
    }
    return letters.size() == 3 ? number : 0;
}

/// A number is sent in hexadecimal digits where the monitor has no text in its place.
std::uint32_t numberOf(std::string_view text) {
    if (text.empty() || text == "unknown") {
        return 0;
    }
    if (text.starts_with("0x")) {
        std::uint32_t number = 0;
        const char* end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + 2, end, number, 16);
        if (error == std::errc() && stop == end) {
            return number;
        }
    }
    return layout::stableHash(text);
}

layout::Identity identityOf(const Monitor& monitor) {
    return {monitor.connector,
            {.vendor = vendorNumber(monitor.vendor),
             .product = numberOf(monitor.product),
             .serial = numberOf(monitor.serial)}};
}

const LogicalMonitor* showing(const MonitorState& state, const std::string& connector) {
    const auto found = std::find_if(
        state.logicalMonitors.begin(), state.logicalMonitors.end(), [&](const auto& each) {
            return std::find(each.monitors.begin(), each.monitors.end(), connector) !=
                   each.monitors.end();
        });
    return found == state.logicalMonitors.end() ? nullptr : &*found;
}

layout::Shown shownBy(const layout::Layout& layout, const Monitor& monitor,
                      const LogicalMonitor& logical) {
    layout::Shown shown{.rotation = layout::rotationOf(logical.transform).value_or(layout::rotate0),
                        .scale = logical.scale};
    if (monitor.currentMode.has_value()) {
        shown.mode = monitor.modes.at(*monitor.currentMode).mode;
    }
    shown.area = layout.areaOf(shown.mode, shown.rotation, shown.scale);
    shown.area.x = logical.x;
    shown.area.y = logical.y;
    return shown;
}

/// Its maker and model, as far as the compositor knows them.
std::string nameOf(const Monitor& monitor) {
    const bool isBoth = !monitor.vendor.empty() && !monitor.product.empty();
    return monitor.vendor + (isBoth ? " " : "") + monitor.product;
}

}  // namespace

const Monitor* MonitorState::monitor(const std::string& connector) const {
    const auto found = std::find_if(monitors.begin(), monitors.end(), [&](const Monitor& each) {
        return each.connector == connector;
    });
    return found == monitors.end() ? nullptr : &*found;
}

std::vector<layout::Identity> identitiesIn(const MonitorState& state) {
    std::vector<layout::Identity> identities;
    for (const Monitor& monitor : state.monitors) {
        identities.push_back(identityOf(monitor));
    }
    return identities;
}

layout::Layout layoutOf(const MonitorState& state) {
    // No limit is told; this is as far as what is remembered may be.
    constexpr int furthest = 1'000'000;
    layout::Layout layout{.primary = 0,
                          .maxWidth = furthest,
                          .maxHeight = furthest,
                          .isInPixels = state.layoutMode == 2,
                          .keepsPrimaryOn = true};
    for (const Monitor& monitor : state.monitors) {
        layout::Output output{.identity = identityOf(monitor),
                              .isConnected = true,
                              .monitor = nameOf(monitor),
                              .isBuiltIn = monitor.isBuiltIn};
        for (const MonitorMode& each : monitor.modes) {
            output.modes.push_back(each.mode);
        }
        if (const LogicalMonitor* logical = showing(state, monitor.connector)) {
            output.shown = shownBy(layout, monitor, *logical);
        }
        layout.outputs.push_back(std::move(output));
    }
    layout::numberOutputs(layout, state.known);
    for (std::size_t i = 0; i < state.monitors.size(); ++i) {
        const LogicalMonitor* logical = showing(state, state.monitors[i].connector);
        if (layout.primary == DisplayID{0} && logical != nullptr && logical->isPrimary) {
            layout.primary = layout.outputs[i].display;
        }
    }
    return layout;
}

}  // namespace tavrel::gnome
