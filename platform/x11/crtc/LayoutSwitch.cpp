#include "platform/x11/crtc/LayoutSwitch.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "platform/x11/crtc/LayoutApplier.h"
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

LayoutDecision decide(LayoutServer& server, DisplayID display, bool enabled,
                      const std::vector<RememberedOutput>& remembered, Snapshot& snapshot) {
    std::optional<Snapshot> now = server.read();
    if (!now.has_value()) {
        return {.status = failure(server), .plan = {}, .remembered = remembered};
    }
    snapshot = std::move(*now);
    return decideSwitch(snapshot, display, enabled, remembered);
}

bool isDone(const LayoutDecision& decision) {
    return decision.status != serverStatus::success || decision.plan.isEmpty();
}

/// The switch itself, with the server grabbed.
LayoutDecision switchGrabbed(LayoutServer& server, DisplayID display, bool enabled,
                             const std::vector<RememberedOutput>& remembered) {
    Snapshot before;
    LayoutDecision decision = decide(server, display, enabled, remembered, before);
    if (isDone(decision) || applyPlan(server, before, decision.plan)) {
        return decision;
    }
    const auto was =
        std::find_if(remembered.begin(), remembered.end(),
                     [&](const RememberedOutput& each) { return each.display == display; });
    if (enabled && was != remembered.end()) {
        // A server that will not have it as it was may still have it some other way: without
        // a mode, only its role is left to restore.
        std::vector<RememberedOutput> roleOnly = remembered;
        roleOnly[static_cast<std::size_t>(was - remembered.begin())].mode = {};
        decision = decide(server, display, enabled, roleOnly, before);
        if (isDone(decision) || applyPlan(server, before, decision.plan)) {
            return decision;
        }
    }
    decision.status = failure(server);
    return decision;
}

}  // namespace

ServerStatus switchDisplay(LayoutServer& server, RememberedOutputs& remembered, DisplayID display,
                           bool enabled) {
    const std::vector<RememberedOutput> before = remembered.all();
    Snapshot snapshot;
    const LayoutDecision preview = decide(server, display, enabled, before, snapshot);
    if (isDone(preview)) {
        return preview.status;
    }
    if (!enabled) {
        remembered.replace(preview.remembered);
    }

    LayoutDecision outcome{.status = serverStatus::notImplemented, .plan = {}, .remembered = {}};
    {
        const Grab grab(server);
        if (grab.isHeld()) {
            outcome = switchGrabbed(server, display, enabled, before);
        } else {
            outcome.status = failure(server);
        }
    }
    const bool changed = outcome.status == serverStatus::success;
    const auto& wanted = changed ? outcome.remembered : before;
    if (remembered.all() != wanted) {
        remembered.replace(wanted);
    }
    return outcome.status;
}

}  // namespace tavrel::x11
