#include "platform/x11/crtc/LayoutPlan.h"

#include <algorithm>
#include <optional>

#include "platform/x11/crtc/LayoutServer.h"

namespace tavrel::x11 {

namespace {

/// The order in which the server lists a CRTC's outputs means nothing.
CrtcSetting sorted(CrtcSetting setting) {
    std::sort(setting.outputs.begin(), setting.outputs.end());
    return setting;
}

/// Whether `now` is what `plan` makes of `before`, with nothing else changed in between.
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

bool carryOut(LayoutServer& server, const LayoutPlan& plan, std::uint32_t configTimestamp) {
    return (!plan.screenBefore.has_value() || server.setScreenSize(*plan.screenBefore)) &&
           (!plan.transform.has_value() || server.setTransform(*plan.transform)) &&
           (!plan.crtc.has_value() || server.setCrtc(*plan.crtc, configTimestamp)) &&
           (!plan.screenAfter.has_value() || server.setScreenSize(*plan.screenAfter)) &&
           (!plan.primary.has_value() || server.setPrimary(*plan.primary));
}

bool isPlanned(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan) {
    const std::optional<Snapshot> now = server.read();
    return now.has_value() && isCarriedOut(plan, before, *now);
}

/// Undoes what `plan` may have done so far; each step for itself, since one that fails is no
/// reason to leave out the others.
void putBack(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan) {
    const std::optional<Snapshot> now = server.read();
    if (!now.has_value()) {
        return;
    }
    // Room for both layouts until the CRTC has moved.
    ScreenSize room = before.screen;
    room.width = std::max(room.width, now->screen.width);
    room.height = std::max(room.height, now->screen.height);
    if (!room.hasPixelsOf(now->screen)) {
        server.setScreenSize(room);
    }
    if (plan.transform.has_value()) {
        const Xid crtc = plan.transform->crtc;
        server.setTransform({.crtc = crtc, .transform = before.crtc(crtc)->transform});
    }
    if (plan.crtc.has_value()) {
        server.setCrtc(settingOf(*before.crtc(plan.crtc->crtc)), now->configTimestamp);
    }
    if (now->screen != before.screen || room != before.screen) {
        server.setScreenSize(before.screen);
    }
    if (before.primary.has_value() && now->primary != before.primary) {
        server.setPrimary(*before.primary);
    }
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

bool applyPlan(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan) {
    if (carryOut(server, plan, before.configTimestamp) && isPlanned(server, before, plan)) {
        return true;
    }
    putBack(server, before, plan);
    return false;
}

}  // namespace tavrel::x11
