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

/// What `plan` makes of the CRTC.
CrtcSetting settingAfter(const LayoutPlan& plan, const Crtc& before) {
    const auto last = std::find_if(plan.crtcs.rbegin(), plan.crtcs.rend(),
                                   [&](const auto& each) { return each.crtc == before.id; });
    return last == plan.crtcs.rend() ? settingOf(before) : *last;
}

bool isUnseen(const LayoutPlan& plan, Xid crtc) {
    return std::find(plan.unseen.begin(), plan.unseen.end(), crtc) != plan.unseen.end();
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
        const Crtc* current = now.crtc(crtc.id);
        return current != nullptr &&
               (isUnseen(plan, crtc.id) ||
                sorted(settingOf(*current)) == sorted(settingAfter(plan, crtc)));
    });
}

bool isAnythingSeen(const Snapshot& snapshot) {
    return std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const auto& output) {
        return output.connected && snapshot.activeCrtc(output) != nullptr;
    });
}

/// Whether the output that is to come on is on in a way that is not to be undone.
bool isLit(const LayoutPlan& plan, const Snapshot& before, const Snapshot& now) {
    const Output* output = now.output(plan.comesOn);
    const Crtc* crtc = output == nullptr ? nullptr : now.activeCrtc(*output);
    if (crtc == nullptr) {
        return false;
    }
    CrtcSetting asked = plan.crtcs.back();
    // Who else it drives does not matter.
    asked.outputs = crtc->outputs;
    return settingOf(*crtc) == asked || !isAnythingSeen(before);
}

/// Goes no further where the server refuses to show something.
void carryOut(LayoutServer& server, const LayoutPlan& plan, std::uint32_t configTimestamp) {
    for (const Xid crtc : plan.unseen) {
        server.setCrtc({.crtc = crtc}, configTimestamp);
    }
    const bool isSet =
        (!plan.screenBefore.has_value() || server.setScreenSize(*plan.screenBefore)) &&
        std::all_of(plan.transforms.begin(), plan.transforms.end(),
                    [&](const auto& transform) { return server.setTransform(transform); }) &&
        std::all_of(plan.crtcs.begin(), plan.crtcs.end(),
                    [&](const auto& crtc) { return server.setCrtc(crtc, configTimestamp); });
    if (!isSet) {
        return;
    }
    if (plan.screenAfter.has_value()) {
        server.setScreenSize(*plan.screenAfter);
    }
    if (plan.primary.has_value()) {
        server.setPrimary(*plan.primary);
    }
}

/// The CRTCs that `plan` changes, each once.
std::vector<Xid> changedBy(const LayoutPlan& plan) {
    std::vector<Xid> changed = plan.unseen;
    for (const CrtcSetting& setting : plan.crtcs) {
        if (std::find(changed.begin(), changed.end(), setting.crtc) == changed.end()) {
            changed.push_back(setting.crtc);
        }
    }
    return changed;
}

bool drivesAnothers(const Snapshot& before, const Crtc& now) {
    return std::any_of(now.outputs.begin(), now.outputs.end(), [&](Xid id) {
        const Output* output = before.output(id);
        return output != nullptr && output->crtc != 0 && output->crtc != now.id;
    });
}

void putCrtcsBack(LayoutServer& server, const Snapshot& before, const Snapshot& now,
                  const LayoutPlan& plan) {
    for (const CrtcTransform& each : plan.transforms) {
        server.setTransform({.crtc = each.crtc, .transform = before.crtc(each.crtc)->transform});
    }
    const std::vector<Xid> changed = changedBy(plan);
    // No output can be driven twice: who has been given another's lets go first.
    for (const Xid id : changed) {
        if (const Crtc* crtc = now.crtc(id); crtc != nullptr && drivesAnothers(before, *crtc)) {
            server.setCrtc({.crtc = id}, now.configTimestamp);
        }
    }
    for (const Xid id : changed) {
        server.setCrtc(settingOf(*before.crtc(id)), now.configTimestamp);
    }
}

/// Undoes what `plan` may have done so far; each step for itself, since one that fails is no
/// reason to leave out the others.
void putBack(LayoutServer& server, const Snapshot& before, const Snapshot& now,
             const LayoutPlan& plan) {
    // Room for both layouts until the CRTCs have moved.
    ScreenSize room = before.screen;
    room.width = std::max(room.width, now.screen.width);
    room.height = std::max(room.height, now.screen.height);
    if (!room.hasPixelsOf(now.screen)) {
        server.setScreenSize(room);
    }
    putCrtcsBack(server, before, now, plan);
    if (room != before.screen) {
        server.setScreenSize(before.screen);
    }
    if (before.primary.has_value() && now.primary != before.primary) {
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
    carryOut(server, plan, before.configTimestamp);
    const std::optional<Snapshot> now = server.read();
    if (!now.has_value()) {
        return false;
    }
    const bool isGood =
        plan.comesOn == 0 ? isCarriedOut(plan, before, *now) : isLit(plan, before, *now);
    if (!isGood) {
        putBack(server, before, *now, plan);
    }
    return isGood;
}

}  // namespace tavrel::x11
