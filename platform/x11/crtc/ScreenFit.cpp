#include "platform/x11/crtc/ScreenFit.h"

#include <algorithm>
#include <cmath>

namespace tavrel::x11 {

namespace {

/// RandR sends places as signed and sizes as unsigned 16-bit numbers.
constexpr int largestCoordinate = 32767;

int fitted(int current, int tightBefore, int needed, int least) {
    const bool keptLarger = tightBefore != 0 && current > std::max(tightBefore, least);
    return std::max({needed, least, keptLarger ? current : 0});
}

int scaled(int millimetres, int oldPixels, int newPixels) {
    if (oldPixels == newPixels) {
        return millimetres;
    }
    const double exact = static_cast<double>(millimetres) * newPixels / std::max(oldPixels, 1);
    // The server refuses a screen without extent.
    return std::max(1, static_cast<int>(std::lround(exact)));
}

ScreenSize withPixels(const ScreenSize& current, int width, int height,
                      const std::optional<ScreenSize>& known) {
    const ScreenSize size{width, height, scaled(current.widthInMillimetres, current.width, width),
                          scaled(current.heightInMillimetres, current.height, height)};
    return known.has_value() && known->hasPixelsOf(size) ? *known : size;
}

}  // namespace

Area boundsOfActive(const Snapshot& snapshot, Xid without, const Area& with) {
    Area bounds{0, 0, std::max(0, with.right()), std::max(0, with.bottom())};
    for (const Crtc& crtc : snapshot.crtcs) {
        if (crtc.mode != 0 && crtc.id != without) {
            bounds.width = std::max(bounds.width, crtc.area.right());
            bounds.height = std::max(bounds.height, crtc.area.bottom());
        }
    }
    return bounds;
}

bool fitsLimits(const Snapshot& snapshot, const Area& area) {
    const auto within = [](int start, int length, int limit) {
        const int most = std::min(limit, largestCoordinate);
        return start >= 0 && length > 0 && length <= most && start <= most - length;
    };
    return within(area.x, area.width, snapshot.maxWidth) &&
           within(area.y, area.height, snapshot.maxHeight);
}

void fitScreen(const Snapshot& snapshot, const Area& needed, const std::optional<ScreenSize>& known,
               LayoutPlan& plan) {
    const ScreenSize& current = snapshot.screen;
    if (needed.width == 0 || needed.height == 0) {
        return;
    }
    const Area before = boundsOfActive(snapshot);
    const int width = fitted(current.width, before.width, needed.width, snapshot.minWidth);
    const int height = fitted(current.height, before.height, needed.height, snapshot.minHeight);

    const int roomyWidth = std::max(current.width, width);
    const int roomyHeight = std::max(current.height, height);
    if (roomyWidth != current.width || roomyHeight != current.height) {
        plan.screenBefore = withPixels(current, roomyWidth, roomyHeight, known);
    }
    if (width != roomyWidth || height != roomyHeight) {
        plan.screenAfter = withPixels(current, width, height, known);
    }
}

}  // namespace tavrel::x11
