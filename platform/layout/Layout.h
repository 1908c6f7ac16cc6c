#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Identity.h"

namespace tavrel::layout {

/// A part of the desktop, from its top left corner, in the desktop's own units: pixels, unless a
/// scale makes these larger.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    constexpr int right() const { return x + width; }
    constexpr int bottom() const { return y + height; }

    friend constexpr bool operator==(const Area&, const Area&) = default;
};

constexpr bool overlap(const Area& a, const Area& b) {
    return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

/// A mode that a monitor can show.
struct Mode {
    /// In pixels.
    int width = 0;
    int height = 0;
    int refreshMillihertz = 0;
    /// The window server's own numbers, which tell modes of one size and refresh apart.
    std::vector<std::int64_t> timings = {};
    /// The scales it can be shown at, the preferred one first; empty where any will do. They
    /// are not what makes it this mode: neither compared nor stored.
    std::vector<double> scales = {};

    friend bool operator==(const Mode& a, const Mode& b) {
        return a.width == b.width && a.height == b.height &&
               a.refreshMillihertz == b.refreshMillihertz && a.timings == b.timings;
    }
};

/// Whether these are one scale: window servers send them with fewer digits than they have.
bool isSameScale(double a, double b);
/// Whether `mode` can be shown at it.
bool offersScale(const Mode& mode, double scale);

/// The refresh rate of a mode with so many pixels a second, and a frame, its borders
/// included; 0 where these say nothing.
int refreshMillihertz(std::int64_t pixelsPerSecond, std::int64_t pixelsPerFrame);

/// How the picture is turned (counterclockwise, in degrees) and reflected: exactly one
/// rotation and any reflections. Stored by users: the numbers must never change.
using Rotation = std::uint16_t;
inline constexpr Rotation rotate0 = 1;
inline constexpr Rotation rotate90 = 2;
inline constexpr Rotation rotate180 = 4;
inline constexpr Rotation rotate270 = 8;
inline constexpr Rotation reflectX = 16;
inline constexpr Rotation reflectY = 32;

bool isRotation(Rotation rotation);
/// Whether width and height change places.
bool isSideways(Rotation rotation);

/// How Wayland turns a picture: by 0 to 3 quarters; and 4 more if it is reflected before.
/// std::nullopt for none of these numbers.
std::optional<Rotation> rotationOf(std::uint32_t transform);
/// And the other way round. REQUIRES: it is a rotation.
std::uint32_t transformOf(Rotation rotation);

/// What an output that is on shows.
struct Shown {
    Mode mode = {};
    Area area = {};
    Rotation rotation = rotate0;
    /// How many pixels make one unit of the desktop, along one side.
    double scale = 1;

    friend bool operator==(const Shown&, const Shown&) = default;
};

/// A connector, with its monitor if one is connected.
struct Output {
    DisplayID display = 0;
    Identity identity = {};
    bool isConnected = false;
    /// Maker and model, as `monitorName` has them. For people.
    std::string monitor = {};
    /// Best first.
    std::vector<Mode> modes = {};
    /// std::nullopt when it is off. A window server may go on driving a connector whose monitor
    /// has been unplugged.
    std::optional<Shown> shown = {};
    /// Whether it is the machine's own panel.
    bool isBuiltIn = false;

    /// Whether somebody can see what it shows. What nobody sees is in nobody's way.
    bool isActive() const { return isConnected && shown.has_value(); }
};

/// What a window server shows at one moment. Plain data, and the same for each of them: what
/// only one knows (how it drives its outputs, how it numbers things) is not in here.
struct Layout {
    std::vector<Output> outputs = {};
    /// std::nullopt where the window server knows no primary display; 0 when none is primary.
    std::optional<DisplayID> primary = {};
    /// The largest desktop the window server can show.
    int maxWidth = 0;
    int maxHeight = 0;
    /// Whether the desktop's unit is the pixel also where something is scaled: then a scale
    /// makes things larger, and leaves the area as it is.
    bool isInPixels = false;
    /// Whether one of those that are on is always primary: then the role moves on when another
    /// program switches its owner off, and that is no sign that it was given away.
    bool keepsPrimaryOn = false;

    /// The size, at 0,0, of what is shown so.
    Area areaOf(const Mode& mode, Rotation rotation, double scale) const;
    /// Null when there is no output of that number.
    const Output* output(DisplayID display) const;
    /// Whether the area is not empty, and inside the largest desktop.
    bool hasRoomFor(const Area& area) const;
};

/// Gives each output the number of its display, by its identity and the monitors known.
void numberOutputs(Layout& layout, const KnownMonitors& known);

}  // namespace tavrel::layout
