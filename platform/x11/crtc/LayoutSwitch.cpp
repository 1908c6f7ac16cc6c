#include "platform/x11/crtc/LayoutSwitch.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/LayoutPlanner.h"

namespace tavrel::x11 {

namespace {

class Grab {
public:
    explicit Grab(LayoutServer& server) : server_(server), held_(server.grab()) {}
    ~Grab() { server_.ungrab(); }
    Grab(const Grab&) = delete;
    Grab& operator=(const Grab&) = delete;

    bool isHeld() const { return held_; }

private:
    LayoutServer& server_;
    bool held_;
};

ServerStatus failure(const LayoutServer& server) {
    return server.isLost() ? serverStatus::notImplemented : serverStatus::cannotComplete;
}

bool isDone(const LayoutDecision& decision) {
    return decision.status != serverStatus::success || decision.plan.isEmpty();
}

/// Empty where anything stored is malformed, our notes included.
layout::Memory readMemory(const layout::RememberedOutputs& remembered) {
    layout::Memory memory = remembered.all();
    const bool isReadable = std::all_of(memory.begin(), memory.end(), [](const auto& each) {
        return decodeNotes(each.notes).has_value();
    });
    return isReadable ? memory : layout::Memory{};
}

LayoutDecision decide(LayoutServer& server, DisplayID display, Wanted wanted,
                      const layout::Memory& memory, Snapshot& snapshot) {
    std::optional<Snapshot> now = server.read();
    if (!now.has_value()) {
        return {.status = failure(server), .memory = memory};
    }
    snapshot = *std::move(now);
    return decideSwitch(snapshot, display, wanted, memory);
}

/// The switch itself, with the server grabbed.
LayoutDecision switchGrabbed(LayoutServer& server, DisplayID display, Wanted wanted,
                             const layout::Memory& memory) {
    Snapshot before;
    LayoutDecision decision = decide(server, display, wanted, memory, before);
    if (isDone(decision) || applyPlan(server, before, decision.plan)) {
        return decision;
    }
    if (wanted == Wanted::on && layout::find(memory, display) != nullptr) {
        // A server that will not have it as it was may still have it some other way.
        return switchGrabbed(server, display, Wanted::onAnew, memory);
    }
    decision.status = failure(server);
    return decision;
}

}  // namespace

ServerStatus switchDisplay(LayoutServer& server, layout::RememberedOutputs& remembered,
                           DisplayID display, bool enabled) {
    const Wanted wanted = enabled ? Wanted::on : Wanted::off;
    const layout::Memory before = readMemory(remembered);
    Snapshot snapshot;
    const LayoutDecision preview = decide(server, display, wanted, before, snapshot);
    if (isDone(preview)) {
        return preview.status;
    }
    if (!enabled) {
        remembered.replace(preview.memory);
    }

    LayoutDecision outcome{.status = serverStatus::notImplemented};
    {
        const Grab grab(server);
        if (grab.isHeld()) {
            outcome = switchGrabbed(server, display, wanted, before);
        } else {
            outcome.status = failure(server);
        }
    }
    const bool changed = outcome.status == serverStatus::success;
    const layout::Memory& kept = changed ? outcome.memory : before;
    if (readMemory(remembered) != kept) {
        remembered.replace(kept);
    }
    return outcome.status;
}

}  // namespace tavrel::x11
