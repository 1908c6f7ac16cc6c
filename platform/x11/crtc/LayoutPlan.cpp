#include "platform/x11/crtc/LayoutPlan.h"

#include <algorithm>

namespace tavrel::x11 {

namespace {

/// The order in which the server lists a CRTC's outputs means nothing.
CrtcSetting sorted(CrtcSetting setting) {
    std::sort(setting.outputs.begin(), setting.outputs.end());
    return setting;
}

}  // namespace

CrtcSetting settingOf(const Crtc& crtc) {
    if (crtc.mode == 0) {
        return {.crtc = crtc.id};
    }
    return {.crtc = crtc.id,
            .mode = crtc.mode,
            .x = crtc.area.x,
            .y = crtc.area.y,
            .rotation = crtc.rotation,
            .outputs = crtc.outputs};
}

bool isCarriedOut(const LayoutPlan& plan, const Snapshot& before, const Snapshot& now) {
    const ScreenSize expectedScreen =
        plan.screenAfter.value_or(plan.screenBefore.value_or(before.screen));
    if (!now.screen.hasPixelsOf(expectedScreen) ||
        (plan.primary.has_value() && now.primary != plan.primary)) {
        return false;
    }
    return std::all_of(before.crtcs.begin(), before.crtcs.end(), [&](const Crtc& crtc) {
        const bool changed = plan.crtc.has_value() && plan.crtc->crtc == crtc.id;
        const Crtc* current = now.crtc(crtc.id);
        return current != nullptr &&
               sorted(settingOf(*current)) == sorted(changed ? *plan.crtc : settingOf(crtc));
    });
}

}  // namespace tavrel::x11
