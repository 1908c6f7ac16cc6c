#include "platform/x11/crtc/ScreenFit.h"

#include <algorithm>
#include <cmath>

namespace tavrel::x11 {

namespace {

int fitted(int current, int tightBefore, int needed, int least) {
    const bool keptLarger = tightBefore != 0 && current > std::max(tightBefore, least);
    return std::max(needed, keptLarger ? current : least);
}

int scaled(int millimetres, int oldPixels, int newPixels) {
    if (oldPixels == newPixels) {
        return millimetres;
    }
    const double exact = static_cast<double>(millimetres) * newPixels / std::max(oldPixels, 1);
    // The server refuses a screen without extent.
    return std::max(1, static_cast<int>(std::lround(exact)));
}

/// Whether the millimetres tell how large a pixel is: rounded, they are off by half of one.
bool tellsDensity(const ScreenSize& size) {
    constexpr int enough = 100;
    return std::min(size.widthInMillimetres, size.heightInMillimetres) >= enough;
}

ScreenSize withPixels(const ScreenSize& current, int width, int height, const ScreenSize& known) {
    // Where another program has switched all off, few pixels are left. By those alone a screen
    // would be of another size each time that it comes back, and of none in the end.
    const ScreenSize& like = !tellsDensity(current) && tellsDensity(known) ? known : current;
    const ScreenSize size{width, height, scaled(like.widthInMillimetres, like.width, width),
                          scaled(like.heightInMillimetres, like.height, height)};
    return known.hasPixelsOf(size) ? known : size;
}

template <typename Counts>
layout::Area boundsOf(const Snapshot& snapshot, const layout::Area& with, Counts counts) {
    layout::Area bounds{0, 0, std::max(0, with.right()), std::max(0, with.bottom())};
    for (const Crtc& crtc : snapshot.crtcs) {
        if (crtc.mode != 0 && counts(crtc)) {
            bounds.width = std::max(bounds.width, crtc.area.right());
            bounds.height = std::max(bounds.height, crtc.area.bottom());
        }
    }
    return bounds;
}

layout::Area boundsOfAll(const Snapshot& snapshot) {
    return boundsOf(snapshot, {}, [](const Crtc& /*crtc*/) { return true; });
}

bool isGivenTo(const LayoutPlan& plan, Xid crtc) {
    return std::any_of(plan.crtcs.begin(), plan.crtcs.end(),
                       [crtc](const CrtcSetting& setting) { return setting.crtc == crtc; });
}

}  // namespace

layout::Area boundsOfActive(const Snapshot& snapshot, Xid without, const layout::Area& with) {
    return boundsOf(snapshot, with,
                    [&](const Crtc& crtc) { return crtc.id != without && !snapshot.isFree(crtc); });
}

void fitScreen(const Snapshot& snapshot, const layout::Area& needed, const ScreenSize& known,
               LayoutPlan& plan) {
    const ScreenSize& current = snapshot.screen;
    const layout::Area before = boundsOfAll(snapshot);
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
    for (const Crtc& crtc : snapshot.crtcs) {
        const bool sticksOut = crtc.area.right() > width || crtc.area.bottom() > height;
        if (crtc.mode != 0 && snapshot.isFree(crtc) && sticksOut && !isGivenTo(plan, crtc.id)) {
            plan.unseen.push_back(crtc.id);
        }
    }
}

}  // namespace tavrel::x11
