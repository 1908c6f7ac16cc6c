#include "platform/x11/crtc/LayoutPlanner.h"

#include <optional>
#include <utility>

#include "platform/layout/LayoutPolicy.h"
#include "platform/x11/crtc/CrtcChoice.h"
#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/ScreenFit.h"
#include "platform/x11/snapshot/SnapshotLayout.h"

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
    was.notes = encodeNotes({.modeHint = crtc->mode,
                             .crtcHint = crtc->id,
                             .transform = crtc->transform,
                             .screen = now.snapshot.screen});
    layout::forget(decision.memory, display);
    decision.memory.push_back(std::move(was));

    CrtcSetting setting = settingOf(*crtc);
    std::erase(setting.outputs, output.id);
    const bool shared = !setting.outputs.empty();
    decision.plan.crtc = shared ? setting : CrtcSetting{.crtc = crtc->id};
    if (!shared) {
        fitScreen(now.snapshot, boundsOfActive(now.snapshot, crtc->id), ScreenSize{},
                  decision.plan);
    }
    if (const auto next = layout::nextPrimary(now.layout, display); next.has_value()) {
        decision.plan.primary = outputOf(now.snapshot, now.layout, *next)->id;
    }
    return decision;
}

/// The first way back for which there is a CRTC, as a plan; std::nullopt when there is none.
std::optional<LayoutPlan> planWayBack(const Scene& now, const Output& output, DisplayID display,
                                      bool anew, const layout::Memory& memory) {
    const layout::RememberedOutput* was = layout::find(memory, display);
    const CrtcNotes notes =
        was != nullptr ? decodeNotes(was->notes).value_or(CrtcNotes{}) : CrtcNotes{};
    for (const layout::WayBack& way : layout::waysBack(now.layout, display, memory)) {
        if (way.isAsItWas && anew) {
            continue;
        }
        const auto choice =
            chooseCrtc(now.snapshot, output, way.shown, way.isAsItWas ? notes : CrtcNotes{});
        if (choice.has_value()) {
            LayoutPlan plan{.transform = choice->transform, .crtc = choice->setting};
            fitScreen(now.snapshot, boundsOfActive(now.snapshot, 0, way.shown.area), notes.screen,
                      plan);
            return plan;
        }
    }
    return std::nullopt;
}

LayoutDecision decideOn(const Scene& now, const Output& output, DisplayID display, bool anew,
                        LayoutDecision decision) {
    if (now.snapshot.activeCrtc(output) != nullptr) {
        return decision;
    }
    auto plan = planWayBack(now, output, display, anew, decision.memory);
    if (!plan.has_value()) {
        decision.status = serverStatus::cannotComplete;
        return decision;
    }
    decision.plan = *std::move(plan);
    if (layout::regainsPrimary(now.layout, display, decision.memory)) {
        decision.plan.primary = output.id;
    }
    layout::forget(decision.memory, display);
    return decision;
}

}  // namespace

LayoutDecision decideSwitch(const Snapshot& snapshot, DisplayID display, Wanted wanted,
                            const layout::Memory& memory) {
    LayoutDecision unchanged{.memory = memory};
    const layout::Layout layout = layoutOf(snapshot);
    const Output* output = outputOf(snapshot, layout, display);
    if (output == nullptr || !output->connected) {
        unchanged.status = serverStatus::illegalArgument;
        return unchanged;
    }
    const Scene now{snapshot, layout};
    return wanted == Wanted::off
               ? decideOff(now, *output, display, std::move(unchanged))
               : decideOn(now, *output, display, wanted == Wanted::onAnew, std::move(unchanged));
}

}  // namespace tavrel::x11
