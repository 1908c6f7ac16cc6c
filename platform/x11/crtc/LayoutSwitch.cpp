#include "platform/x11/crtc/LayoutSwitch.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>

#include "platform/x11/crtc/CrtcNotes.h"
#include "platform/x11/crtc/LayoutPlanner.h"
#include "platform/x11/snapshot/Snapshot.h"

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
    return decision.status != serverStatus::success || decision.plans.empty();
}

/// Empty when anything is malformed, our notes included.
layout::Memory readable(layout::Memory memory) {
    const bool isReadable = std::all_of(memory.begin(), memory.end(), [](const auto& each) {
        return decodeNotes(each.notes).has_value();
    });
    return isReadable ? memory : layout::Memory{};
}

/// Stores what has changed from `before` to `after`, and nothing else: another process may
/// switch other displays.
void store(layout::RememberedOutputs& remembered, const layout::Memory& before,
           const layout::Memory& after) {
    if (before != after) {
        remembered.update([&](layout::Memory now) {
            return layout::merged(readable(std::move(now)), before, after);
        });
    }
}

/// A switch to be made, and what it is decided by beside the server's state.
struct Request {
    DisplayID display = 0;
    bool enabled = false;
    layout::Memory memory = {};
    layout::LastSeen& lastSeen;
};

LayoutDecision decide(LayoutServer& server, const Request& request, Snapshot& snapshot) {
    std::optional<Snapshot> now = server.read();
    if (!now.has_value()) {
        return {.status = failure(server), .memory = request.memory};
    }
    snapshot = *std::move(now);
    noteSeen(request.lastSeen, snapshot);
    return decideSwitch(snapshot, request.display, request.enabled, request.memory,
                        request.lastSeen);
}

/// Decides with the server grabbed, and carries out the plan of that number. std::nullopt when
/// the server will not have it; then all is as before.
std::optional<LayoutDecision> attempt(LayoutServer& server, const Request& request,
                                      std::size_t number) {
    const Grab grab(server);
    if (!grab.isHeld()) {
        return LayoutDecision{.status = failure(server), .memory = request.memory};
    }
    Snapshot before;
    LayoutDecision decision = decide(server, request, before);
    if (isDone(decision)) {
        return decision;
    }
    if (number < decision.plans.size() && applyPlan(server, before, decision.plans[number])) {
        return decision;
    }
    if (number + 1 < decision.plans.size()) {
        return std::nullopt;
    }
    decision.status = failure(server);
    return decision;
}

/// Tries one plan after the other. Others are served in between, however long each takes.
LayoutDecision switchGrabbed(LayoutServer& server, const Request& request) {
    // Far more than a server refuses that can show anything at all.
    constexpr std::size_t most = 64;
    for (std::size_t number = 0; number < most; ++number) {
        if (auto decision = attempt(server, request, number)) {
            return *std::move(decision);
        }
    }
    return {.status = failure(server), .memory = request.memory};
}

}  // namespace

void noteSeen(layout::LastSeen& lastSeen, const Snapshot& snapshot) {
    const layout::Layout layout = layoutOf(snapshot);
    lastSeen.see(layout, [&](const layout::Output& shown) {
        const Output& output = *outputOf(snapshot, layout, shown.display);
        return encodeNotes(notesOn(snapshot, *snapshot.activeCrtc(output)));
    });
}

ServerStatus switchDisplay(LayoutServer& server, layout::RememberedOutputs& remembered,
                           layout::LastSeen& lastSeen, DisplayID display, bool enabled) {
    // What is remembered is stored up to twice, never with the server grabbed: nobody is served
    // then, and a disk may be slow.
    //
    // - Before the change, by a look ahead without the grab. Going off: how the display is set up
    //   now, so that not even a crash right after the change loses it; unless it can't go off or is
    //   off already, and that is all then. Coming on: nothing, for a display that fails to come on
    //   is still remembered. So nobody looks ahead there.
    // - After it, by how it ended. Done: what was decided with the server grabbed, which may have
    //   been set up otherwise by then. Refused: what was remembered before. Server lost: nothing,
    //   for nobody knows how far it came, and the way back may be needed.
    const Request request{.display = display,
                          .enabled = enabled,
                          .memory = readable(remembered.all()),
                          .lastSeen = lastSeen};
    layout::Memory noted = request.memory;
    if (enabled) {
        server.lookForMonitors();
    } else {
        Snapshot snapshot;
        LayoutDecision preview = decide(server, request, snapshot);
        if (isDone(preview)) {
            return preview.status;
        }
        noted = std::move(preview.memory);
        store(remembered, request.memory, noted);
    }

    const LayoutDecision outcome = switchGrabbed(server, request);
    if (outcome.status == serverStatus::success) {
        store(remembered, noted, outcome.memory);
    } else if (outcome.status != serverStatus::notImplemented) {
        store(remembered, noted, request.memory);
    }
    return outcome.status;
}

}  // namespace tavrel::x11
