#include "platform/layout/Layout.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace tavrel::layout {

namespace {

/// Of a Wayland transform.
constexpr std::uint32_t quarters = 4;

}  // namespace

int refreshMillihertz(std::int64_t pixelsPerSecond, std::int64_t pixelsPerFrame) {
    if (pixelsPerFrame <= 0) {
        return 0;
    }
    const std::int64_t exact = pixelsPerSecond * 1000 / pixelsPerFrame;
    return static_cast<int>(std::min<std::int64_t>(exact, std::numeric_limits<int>::max()));
}

bool isSameScale(double a, double b) {
    constexpr double tolerance = 0.001;
    return std::abs(a - b) < tolerance;
}

bool offersScale(const Mode& mode, double scale) {
    return mode.scales.empty() ||
           std::any_of(mode.scales.begin(), mode.scales.end(),
                       [scale](double each) { return isSameScale(each, scale); });
}

bool isRotation(Rotation rotation) {
    constexpr unsigned rotations = rotate0 | rotate90 | rotate180 | rotate270;
    constexpr unsigned reflections = reflectX | reflectY;
    return std::has_single_bit(rotation & rotations) &&
           (rotation & ~(rotations | reflections)) == 0;
}

bool isSideways(Rotation rotation) {
    return (rotation & (rotate90 | rotate270)) != 0;
}

std::optional<Rotation> rotationOf(std::uint32_t transform) {
    if (transform >= 2 * quarters) {
        return std::nullopt;
    }
    const int turned = rotate0 << (transform % quarters);
    return static_cast<Rotation>(transform < quarters ? turned : turned | reflectX);
}

std::uint32_t transformOf(Rotation rotation) {
    constexpr unsigned turns = rotate0 | rotate90 | rotate180 | rotate270;
    const bool isReflectedX = (rotation & reflectX) != 0;
    const bool isReflectedY = (rotation & reflectY) != 0;
    auto transform = static_cast<std::uint32_t>(std::countr_zero(rotation & turns));
    // Reflecting along the other axis is the same, turned by half.
    transform = (transform + (isReflectedY ? 2 : 0)) % quarters;
    return transform + (isReflectedX != isReflectedY ? quarters : 0);
}

Area Layout::areaOf(const Mode& mode, Rotation rotation, double scale) const {
    const auto inUnits = [&](int pixels) {
        return isInPixels ? pixels : static_cast<int>(std::lround(pixels / scale));
    };
    Area area{0, 0, inUnits(mode.width), inUnits(mode.height)};
    if (isSideways(rotation)) {
        std::swap(area.width, area.height);
    }
    return area;
}

const Output* Layout::output(DisplayID display) const {
    const auto found = std::find_if(outputs.begin(), outputs.end(), [display](const Output& each) {
        return each.display == display;
    });
    return found == outputs.end() ? nullptr : &*found;
}

bool Layout::hasRoomFor(const Area& area) const {
    const auto within = [](int start, int length, int limit) {
        return start >= 0 && length > 0 && length <= limit && start <= limit - length;
    };
    return within(area.x, area.width, maxWidth) && within(area.y, area.height, maxHeight);
}

void numberOutputs(Layout& layout, const KnownMonitors& known) {
    std::vector<Identity> identities;
    for (const Output& output : layout.outputs) {
        identities.push_back(output.identity);
    }
    const std::vector<DisplayID> displays = identify(identities, known).displays;
    for (std::size_t i = 0; i < displays.size(); ++i) {
        layout.outputs[i].display = displays[i];
    }
}

}  // namespace tavrel::layout
