#include "platform/x11/crtc/LayoutPlanner.h"

#include <cstddef>
#include <iterator>
#include <optional>
#include <utility>

#include "platform/layout/LayoutPolicy.h"
#include "platform/x11/crtc/CrtcChoice.h"
#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/ScreenFit.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

namespace {

/// One look at the server, in both vocabularies.
struct Scene {
    const Snapshot& snapshot;
    const layout::Layout& layout;
};

LayoutDecision decideOff(const Scene& now, const Output& output, DisplayID display,
                         LayoutDecision decision) {
    const Crtc* crtc = now.snapshot.activeCrtc(output);
    if (crtc == nullptr) {
        return decision;
    }
    if (layout::isLastShown(now.layout, display)) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }
    layout::RememberedOutput was = layout::describe(now.layout, display, decision.memory);
    was.notes = encodeNotes(notesOn(now.snapshot, *crtc));
    layout::forget(decision.memory, display);
    decision.memory.push_back(std::move(was));

    CrtcSetting setting = settingOf(*crtc);
    std::erase(setting.outputs, output.id);
    const bool shared = !setting.outputs.empty();
    LayoutPlan plan{.crtcs = {shared ? setting : CrtcSetting{.crtc = crtc->id}}};
    if (!shared) {
        fitScreen(now.snapshot, boundsOfActive(now.snapshot, crtc->id), ScreenSize{}, plan);
    }
    if (const auto next = layout::nextPrimary(now.layout, display); next.has_value()) {
        plan.primary = outputOf(now.snapshot, now.layout, *next)->id;
    }
    decision.plans = {std::move(plan)};
    return decision;
}

LayoutPlan planOn(const Snapshot& snapshot, const Output& output, const layout::Area& area,
                  CrtcChoice choice, const ScreenSize& knownScreen) {
    LayoutPlan plan{.transforms = std::move(choice.transforms),
                    .crtcs = std::move(choice.settings),
                    .comesOn = output.id};
    fitScreen(snapshot, boundsOfActive(snapshot, 0, area), knownScreen, plan);
    return plan;
}

/// Each way back by the CRTC that suits it best; then, if there is nothing else to be seen,
/// by the others too.
std::vector<LayoutPlan> plansOn(const Scene& now, const Output& output, DisplayID display,
                                const layout::Memory& memory) {
    const layout::RememberedOutput* was = layout::find(memory, display);
    const CrtcNotes notes =
        was != nullptr ? decodeNotes(was->notes).value_or(CrtcNotes{}) : CrtcNotes{};
    const bool isNothingShown = layout::isNothingShown(now.layout);
    std::vector<LayoutPlan> plans;
    std::vector<LayoutPlan> lastResorts;
    for (const layout::WayBack& way : layout::waysBack(now.layout, display, memory)) {
        auto choices =
            crtcChoices(now.snapshot, output, way.shown, way.isAsItWas ? notes : CrtcNotes{});
        for (std::size_t i = 0; i < choices.size() && (i == 0 || isNothingShown); ++i) {
            (i == 0 ? plans : lastResorts)
                .push_back(planOn(now.snapshot, output, way.shown.area, std::move(choices[i]),
                                  notes.screen));
        }
    }
    std::move(lastResorts.begin(), lastResorts.end(), std::back_inserter(plans));
    return plans;
}

LayoutDecision decideOn(const Scene& now, const Output& output, DisplayID display,
                        const layout::LastSeen& lastSeen, LayoutDecision decision) {
    if (now.snapshot.activeCrtc(output) != nullptr) {
        // Another program has switched it on.
        layout::forget(decision.memory, display);
        return decision;
    }
    const layout::Memory known = lastSeen.completed(decision.memory, display);
    decision.plans = plansOn(now, output, display, known);
    if (decision.plans.empty()) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }
    if (layout::regainsPrimary(now.layout, display, known)) {
        for (LayoutPlan& plan : decision.plans) {
            plan.primary = output.id;
        }
    }
    layout::forget(decision.memory, display);
    return decision;
}

}  // namespace

LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, bool enabled,
                            const layout::Memory& memory, const layout::LastSeen& lastSeen) {
    LayoutDecision unchanged{.memory = memory};
    const layout::Layout layout = layoutOf(snapshot);
    const Output* output = outputOf(snapshot, layout, display);
    if (output == nullptr || !output->connected) {
        unchanged.status = serverStatus::illegalArgument;
        return unchanged;
    }
    const Scene now{snapshot, layout};
    return enabled ? decideOn(now, *output, display, lastSeen, std::move(unchanged))
                   : decideOff(now, *output, display, std::move(unchanged));
}

}  // namespace tavrel::x11
