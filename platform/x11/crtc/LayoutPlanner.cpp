#include "platform/x11/crtc/LayoutPlanner.h"

#include <algorithm>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

#include "platform/layout/Identity.h"
#include "platform/x11/crtc/Placement.h"
#include "platform/x11/crtc/ScreenFit.h"

namespace tavrel::x11 {

namespace {

using Identifiers = std::map<Xid, DisplayID>;

const RememberedOutput* find(const std::vector<RememberedOutput>& remembered, DisplayID display) {
    const auto found = std::find_if(remembered.begin(), remembered.end(),
                                    [&](const auto& each) { return each.display == display; });
    return found == remembered.end() ? nullptr : &*found;
}

void erase(std::vector<RememberedOutput>& remembered, DisplayID display) {
    std::erase_if(remembered, [&](const auto& each) { return each.display == display; });
}

/// Whether the display the primary role belongs to is off. Whoever has the role meanwhile has
/// it on loan.
bool isPrimaryOnLoan(const Snapshot& snapshot, const Identifiers& identifiers,
                     const std::vector<RememberedOutput>& remembered) {
    return std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const auto& output) {
        const RememberedOutput* was = find(remembered, identifiers.at(output.id));
        return was != nullptr && was->primary && !was->primaryOnLoan && output.connected &&
               snapshot.activeCrtc(output) == nullptr;
    });
}

RememberedOutput describe(const Snapshot& snapshot, const Output& output, const Crtc& crtc,
                          const Identifiers& identifiers,
                          const std::vector<RememberedOutput>& remembered) {
    RememberedOutput now{.display = identifiers.at(output.id),
                         .modeHint = crtc.mode,
                         .crtcHint = crtc.id,
                         .area = crtc.area,
                         .rotation = crtc.rotation,
                         .transform = crtc.transform,
                         .screen = snapshot.screen};
    if (const Mode* mode = snapshot.mode(crtc.mode); mode != nullptr) {
        now.mode = mode->timings;
    }
    for (const Output& other : snapshot.outputs) {
        const Crtc* driving = snapshot.activeCrtc(other);
        if (other.id != output.id && driving != nullptr && overlap(driving->area, crtc.area)) {
            now.mirrors.push_back(identifiers.at(other.id));
        }
    }
    now.primary = snapshot.primary == output.id;
    now.primaryOnLoan = now.primary && isPrimaryOnLoan(snapshot, identifiers, remembered);
    return now;
}

/// The active output nearest to the screen's origin: where a desktop usually begins.
const Output* successor(const Snapshot& snapshot, const Output& leaving) {
    const Output* best = nullptr;
    const auto place = [&](const Output& output) {
        const Area& area = snapshot.activeCrtc(output)->area;
        return std::tuple(area.x, area.y, output.name);
    };
    for (const Output& output : snapshot.outputs) {
        if (output.id != leaving.id && snapshot.activeCrtc(output) != nullptr &&
            (best == nullptr || place(output) < place(*best))) {
            best = &output;
        }
    }
    return best;
}

LayoutDecision decideOff(const Snapshot& snapshot, const Output& output,
                         const Identifiers& identifiers, LayoutDecision decision) {
    const Crtc* crtc = snapshot.activeCrtc(output);
    if (crtc == nullptr) {
        return decision;
    }
    const RememberedOutput now =
        describe(snapshot, output, *crtc, identifiers, decision.remembered);
    erase(decision.remembered, now.display);
    decision.remembered.push_back(now);

    CrtcSetting setting = settingOf(*crtc);
    std::erase(setting.outputs, output.id);
    const bool shared = !setting.outputs.empty();
    decision.plan.crtc = shared ? setting : CrtcSetting{.crtc = crtc->id};
    if (!shared) {
        fitScreen(snapshot, boundsOfActive(snapshot, crtc->id), std::nullopt, decision.plan);
    }
    if (snapshot.primary == output.id) {
        if (const Output* next = successor(snapshot, output); next != nullptr) {
            decision.plan.primary = next->id;
        }
    }
    return decision;
}

LayoutDecision decideOn(const Snapshot& snapshot, const Output& output,
                        const Identifiers& identifiers, LayoutDecision decision) {
    if (snapshot.activeCrtc(output) != nullptr) {
        return decision;
    }
    const DisplayID display = identifiers.at(output.id);
    const RememberedOutput* was = find(decision.remembered, display);
    std::optional<Placement> placement;
    if (was != nullptr) {
        placement = placeAsRemembered(snapshot, output, identifiers, *was);
    }
    if (!placement.has_value()) {
        placement = placeAnew(snapshot, output, was);
    }
    if (!placement.has_value()) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }

    decision.plan.crtc = placement->setting;
    decision.plan.transform = placement->transform;
    fitScreen(snapshot, boundsOfActive(snapshot, 0, placement->area),
              was != nullptr ? std::optional(was->screen) : std::nullopt, decision.plan);
    const bool hadRole =
        was != nullptr && was->primary &&
        (!was->primaryOnLoan || isPrimaryOnLoan(snapshot, identifiers, decision.remembered));
    if (hadRole && snapshot.primary.has_value() && snapshot.primary != output.id) {
        decision.plan.primary = output.id;
    }
    erase(decision.remembered, display);
    return decision;
}

}  // namespace

LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, bool enabled,
                            const std::vector<RememberedOutput>& remembered) {
    LayoutDecision decision{.remembered = remembered};
    const Output* output = connectedOutput(snapshot, display);
    if (output == nullptr) {
        decision.status = serverStatus::illegalArgument;
        return decision;
    }
    const Identifiers identifiers = displayIdentifiers(snapshot);
    return enabled ? decideOn(snapshot, *output, identifiers, std::move(decision))
                   : decideOff(snapshot, *output, identifiers, std::move(decision));
}

}  // namespace tavrel::x11
