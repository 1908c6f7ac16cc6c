#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/layout/LastSeen.h"
#include "platform/layout/LayoutDiff.h"
#include "platform/layout/LayoutPolicy.h"
#include "platform/x11/crtc/LayoutPlanner.h"
#include "platform/x11/snapshot/Replies.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "tests/fuzz/Require.h"
#include "tests/platform/x11/snapshot/ReplyBuilder.h"

/// What is made of any replies an X server could send, from their bytes to the decision
/// what to tell it.
///
/// The input is what a snapshot is read from: the answers without lists in them, then the
/// replies in the order in which they are asked for.
namespace tavrel::x11 {
namespace {

using fuzz::require;

/// The server's end of the connection.
class Stream {
public:
    explicit Stream(ReplyBytes bytes) : rest_(bytes) {}

    template <typename Number>
    Number number() {
        Number number{};
        const ReplyBytes bytes = take(sizeof number);
        if (!bytes.empty()) {
            std::memcpy(&number, bytes.data(), bytes.size());
        }
        return number;
    }

    /// The next reply by the length it gives itself; a shorter one where the stream ends.
    ReplyBytes reply() {
        constexpr std::size_t shortest = 32;
        constexpr std::size_t unit = 4;
        constexpr std::size_t placeOfLength = 4;
        std::uint32_t length = 0;
        if (rest_.size() >= shortest) {
            std::memcpy(&length, &rest_[placeOfLength], sizeof length);
        }
        return take(shortest + unit * length);
    }

    bool isOver() const { return rest_.empty(); }

private:
    ReplyBytes take(std::size_t size) {
        const ReplyBytes taken = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

    ReplyBytes rest_;
};

ReplyBytes withoutTheLastByte(const Reply& reply) {
    return ReplyBytes(reply).first(reply.size() - 1);
}

/// Reads one reply into `part`; what was understood is understood again, and all of it is
/// needed.
template <typename Part>
bool readAndCompare(ReplyBytes bytes, Part& part, bool (&read)(ReplyBytes, Part&),
                    Reply (&write)(const Part&)) {
    // Memory of just this size, so that nothing beyond it is read unseen.
    const Reply alone(bytes.begin(), bytes.end());
    const Part former = part;
    if (!read(alone, part)) {
        require(part == former, "a refused reply changes nothing");
        return false;
    }
    const Reply written = write(part);
    Part again = former;
    require(read(written, again) && again == part, "what is understood can be said again");
    require(!read(withoutTheLastByte(written), again), "a reply that ends too early is refused");
    return true;
}

Reply writeEdid(const Output& output) {
    return edidReply(output.edid);
}

std::optional<Snapshot> readOutline(ReplyBytes bytes) {
    const Reply alone(bytes.begin(), bytes.end());
    std::optional<Snapshot> outline = readResources(alone);
    if (outline.has_value()) {
        const Reply written = resourcesReply(*outline);
        require(readResources(written) == outline, "what is understood can be said again");
        require(!readResources(withoutTheLastByte(written)).has_value(),
                "a list that ends too early is refused");
    }
    return outline;
}

/// As the application reads a snapshot, but for what needs a connection.
std::optional<Snapshot> readSnapshot(Stream stream) {
    Snapshot fixed;
    fixed.primary = stream.number<Xid>();
    for (int* number : {&fixed.screen.width, &fixed.screen.height, &fixed.screen.widthInMillimetres,
                        &fixed.screen.heightInMillimetres, &fixed.minWidth, &fixed.minHeight,
                        &fixed.maxWidth, &fixed.maxHeight}) {
        *number = stream.number<std::uint16_t>();
    }
    std::optional<Snapshot> snapshot = readOutline(stream.reply());
    if (!snapshot.has_value()) {
        return std::nullopt;
    }
    fixed.crtcs = std::move(snapshot->crtcs);
    fixed.outputs = std::move(snapshot->outputs);
    fixed.modes = std::move(snapshot->modes);
    for (Crtc& crtc : fixed.crtcs) {
        if (stream.isOver() || !readAndCompare(stream.reply(), crtc, readCrtcInfo, crtcInfoReply) ||
            !readAndCompare(stream.reply(), crtc, readCrtcTransform, crtcTransformReply)) {
            return std::nullopt;
        }
    }
    for (Output& output : fixed.outputs) {
        if (stream.isOver() ||
            !readAndCompare(stream.reply(), output, readOutputInfo, outputInfoReply) ||
            !readAndCompare(stream.reply(), output, readOutputEdid, writeEdid)) {
            return std::nullopt;
        }
    }
    return fixed;
}

void checkNumbers(const Snapshot& snapshot, const layout::Layout& layout) {
    require(layout.outputs.size() == snapshot.outputs.size(), "each output is a display");
    std::set<DisplayID> displays{0};
    for (std::size_t i = 0; i < layout.outputs.size(); ++i) {
        const layout::Output& output = layout.outputs[i];
        require(displays.insert(output.display).second, "no two displays have one number");
        require(outputOf(snapshot, layout, output.display) == &snapshot.outputs[i],
                "a display is found again");
    }
    require(layout::reportsBetween(layoutOf(snapshot), layoutOf(snapshot)).empty(),
            "nothing to report of no change");
}

/// The server once it has carried out `plan`.
Snapshot after(Snapshot snapshot, const LayoutPlan& plan) {
    std::vector<CrtcSetting> settings;
    for (const Xid unseen : plan.unseen) {
        settings.push_back({.crtc = unseen});
    }
    settings.insert(settings.end(), plan.crtcs.begin(), plan.crtcs.end());
    for (const CrtcSetting& setting : settings) {
        for (Crtc& crtc : snapshot.crtcs) {
            if (crtc.id == setting.crtc) {
                crtc.mode = setting.mode;
                crtc.outputs = setting.outputs;
                crtc.area = setting.mode == 0 ? layout::Area{} : crtc.area;
            }
        }
        for (Output& output : snapshot.outputs) {
            const bool isDriven = std::ranges::count(setting.outputs, output.id) > 0;
            if (isDriven || output.crtc == setting.crtc) {
                output.crtc = isDriven ? setting.crtc : 0;
            }
        }
    }
    return snapshot;
}

/// Only where output and CRTC agree: what a server says may contradict itself.
bool isShown(const Snapshot& snapshot, const Output& output) {
    const Crtc* crtc = snapshot.activeCrtc(output);
    return output.connected && crtc != nullptr && std::ranges::count(crtc->outputs, output.id) > 0;
}

/// Whether `now` shows whatever `before` does, but for `except`.
bool othersStayOn(const Snapshot& before, const Snapshot& now, Xid except) {
    return std::ranges::all_of(before.outputs, [&](const Output& output) {
        return output.id == except || !isShown(before, output) ||
               isShown(now, *now.output(output.id));
    });
}

void checkOff(const Snapshot& snapshot, const layout::Layout& layout, const layout::Output& output,
              const LayoutDecision& decision) {
    if (decision.plans.empty()) {
        require(!output.shown.has_value() || decision.status != serverStatus::success,
                "what is on is switched off, or that is refused");
        return;
    }
    require(output.shown.has_value(), "only what is on is switched off");
    require(std::ranges::any_of(layout.outputs,
                                [&](const layout::Output& other) {
                                    return other.display != output.display && other.isConnected &&
                                           other.shown.has_value();
                                }),
            "the last one stays");
    const Xid which = outputOf(snapshot, layout, output.display)->id;
    for (const LayoutPlan& plan : decision.plans) {
        const Snapshot now = after(snapshot, plan);
        require(!isShown(now, *now.output(which)), "it goes off");
        require(othersStayOn(snapshot, now, which), "nobody else goes off with it");
    }
    require(layout::find(decision.memory, output.display) != nullptr, "it is remembered");
    require(layout::decodeMemory(layout::encodeMemory(decision.memory)) == decision.memory,
            "what is remembered can be stored");
}

void checkOn(const Snapshot& snapshot, const layout::Layout& layout, const layout::Output& output,
             const LayoutDecision& decision) {
    const Xid which = outputOf(snapshot, layout, output.display)->id;
    for (const LayoutPlan& plan : decision.plans) {
        require(!output.shown.has_value(), "only what is off is switched on");
        require(plan.comesOn == which && !plan.crtcs.empty(), "it is the one that comes on");
        require(snapshot.crtc(plan.crtcs.back().crtc) != nullptr &&
                    snapshot.mode(plan.crtcs.back().mode) != nullptr,
                "it is shown with what there is");
        const Snapshot now = after(snapshot, plan);
        require(isShown(now, *now.output(which)), "it comes on");
        require(othersStayOn(snapshot, now, which), "nobody else goes off for it");
    }
    if (!decision.plans.empty()) {
        require(layout::find(decision.memory, output.display) == nullptr,
                "it is remembered no more");
    }
}

void checkWayBack(const Snapshot& now, DisplayID display, const layout::Memory& memory,
                  const layout::LastSeen& lastSeen) {
    const layout::Layout layout = layoutOf(now);
    const layout::Output* output = layout.output(display);
    if (output != nullptr && output->isConnected) {
        checkOn(now, layout, *output, decideSwitch(now, display, true, memory, lastSeen));
    }
}

void checkDecisions(const Snapshot& snapshot, const layout::Layout& layout) {
    const layout::LastSeen nothing;
    layout::LastSeen everything;
    everything.see(layout, [](const layout::Output& /*output*/) { return std::string(); });
    for (const layout::Output& output : layout.outputs) {
        const LayoutDecision off = decideSwitch(snapshot, output.display, false, {}, nothing);
        if (!output.isConnected) {
            require(off.status == serverStatus::illegalArgument, "who is not there is unknown");
            continue;
        }
        checkOff(snapshot, layout, output, off);
        checkWayBack(snapshot, output.display, {}, nothing);
        for (const LayoutPlan& plan : off.plans) {
            const Snapshot without = after(snapshot, plan);
            checkWayBack(without, output.display, off.memory, nothing);
            checkWayBack(without, output.display, {}, everything);
        }
    }
}

/// Whether every output and every CRTC has a number of its own, and not the one that stands for
/// none; only then can be said what a plan comes to.
bool hasDistinctNumbers(const Snapshot& snapshot) {
    std::set<Xid> outputs{0};
    std::set<Xid> crtcs{0};
    return std::ranges::all_of(
               snapshot.outputs,
               [&](const Output& output) { return outputs.insert(output.id).second; }) &&
           std::ranges::all_of(snapshot.crtcs,
                               [&](const Crtc& crtc) { return crtcs.insert(crtc.id).second; });
}

void check(ReplyBytes input) {
    const std::optional<Snapshot> snapshot = readSnapshot(Stream(input));
    if (!snapshot.has_value()) {
        return;
    }
    const layout::Layout layout = layoutOf(*snapshot);
    checkNumbers(*snapshot, layout);
    // Each decision looks at everything; of very many outputs that takes too long to be tried
    // often.
    constexpr std::size_t enough = 16;
    if (layout.outputs.size() <= enough && hasDistinctNumbers(*snapshot)) {
        checkDecisions(*snapshot, layout);
    }
}

}  // namespace
}  // namespace tavrel::x11

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::x11::check({data, size});
    return 0;
}
