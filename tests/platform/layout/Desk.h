#pragma once

#include <gmock/gmock.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/layout/Layout.h"

namespace tavrel::layout {

/// The displays of the desks that tests build.
inline constexpr DisplayID monitorA = 1;
inline constexpr DisplayID monitorB = 2;
inline constexpr DisplayID monitorC = 3;

inline const Mode fullHd{.width = 1920, .height = 1080, .refreshMillihertz = 60000};
inline const Mode fast{.width = 1920, .height = 1080, .refreshMillihertz = 144000};
inline const Mode huge{.width = 3840, .height = 2160, .refreshMillihertz = 60000};
inline const Mode small{.width = 1280, .height = 1024, .refreshMillihertz = 60000};

/// Builds layouts for tests. The calls after `monitor` are about that one, whose connector is
/// called like it.
///
/// Unless said otherwise, a monitor is off and prefers 1920x1080, and the first is primary.
class Desk {
public:
    Desk& monitor(DisplayID display) {
        const std::string name(1, static_cast<char>('A' + display - monitorA));
        layout_.outputs.push_back({.display = display,
                                   .identity = {name, {}},
                                   .isConnected = true,
                                   .modes = {fullHd, small}});
        layout_.primary = layout_.outputs.front().display;
        return *this;
    }
    Desk& at(int x, int y, const Mode& mode = fullHd, Rotation rotation = rotate0) {
        Area area{x, y, mode.width, mode.height};
        if (isSideways(rotation)) {
            std::swap(area.width, area.height);
        }
        current().shown = {.mode = mode, .area = area, .rotation = rotation};
        return *this;
    }
    /// In the desktop's own units, as areas are where something is scaled.
    Desk& scaledAt(double scale, int x, int y, const Mode& mode, Rotation rotation = rotate0) {
        Area area = layout_.areaOf(mode, rotation, scale);
        area.x = x;
        area.y = y;
        current().shown = {.mode = mode, .area = area, .rotation = rotation, .scale = scale};
        return *this;
    }
    Desk& inPixels() {
        layout_.isInPixels = true;
        return *this;
    }
    /// Best first.
    Desk& offering(std::vector<Mode> modes) {
        current().modes = std::move(modes);
        return *this;
    }
    Desk& unplugged() {
        current().isConnected = false;
        return *this;
    }
    Desk& primaryIs(std::optional<DisplayID> display) {
        layout_.primary = display;
        return *this;
    }
    Desk& keepingPrimaryOn() {
        layout_.keepsPrimaryOn = true;
        return *this;
    }
    Desk& limitedTo(int width, int height) {
        layout_.maxWidth = width;
        layout_.maxHeight = height;
        return *this;
    }

    /// So that a desk is a layout wherever one is expected.
    operator Layout() const { return layout_; }

private:
    Output& current() { return layout_.outputs.back(); }

    Layout layout_{.maxWidth = 32767, .maxHeight = 32767};
};

/// So that a failed comparison can be read.
inline void PrintTo(const Area& area, std::ostream* out) {
    *out << area.width << 'x' << area.height << '+' << area.x << '+' << area.y;
}

}  // namespace tavrel::layout
