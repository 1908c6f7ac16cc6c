#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "platform/layout/LayoutPolicy.h"
#include "platform/x11/crtc/LayoutPlanner.h"
#include "platform/x11/snapshot/Replies.h"
#include "platform/x11/snapshot/SnapshotDiff.h"
#include "platform/x11/snapshot/SnapshotLayout.h"
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
    require(reportsBetween(snapshot, snapshot).empty(), "nothing to report of no change");
}

void checkOff(const Snapshot& snapshot, const layout::Layout& layout, const layout::Output& output,
              const LayoutDecision& decision) {
    if (decision.plan.isEmpty()) {
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
    const Output& which = *outputOf(snapshot, layout, output.display);
    require(decision.plan.crtc.has_value() && decision.plan.crtc->crtc == which.crtc &&
                std::ranges::count(decision.plan.crtc->outputs, which.id) == 0,
            "its own CRTC lets go of it");
    require(layout::find(decision.memory, output.display) != nullptr, "it is remembered");
    require(layout::decodeMemory(layout::encodeMemory(decision.memory)) == decision.memory,
            "what is remembered can be stored");
}

void checkOn(const Snapshot& snapshot, const layout::Layout& layout, const layout::Output& output,
             const LayoutDecision& decision) {
    if (decision.plan.isEmpty()) {
        return;
    }
    require(!output.shown.has_value(), "only what is off is switched on");
    const CrtcSetting& setting = decision.plan.crtc.value();
    const Crtc* crtc = snapshot.crtc(setting.crtc);
    const Output& which = *outputOf(snapshot, layout, output.display);
    require(crtc != nullptr && setting.mode != 0 && snapshot.mode(setting.mode) != nullptr,
            "it is shown with what there is");
    require(std::ranges::count(setting.outputs, which.id) > 0, "it is the one that is shown");
    require(std::ranges::all_of(
                crtc->outputs,
                [&](Xid other) { return std::ranges::count(setting.outputs, other) > 0; }),
            "nobody else goes off for it");
    require(layout::find(decision.memory, output.display) == nullptr, "it is remembered no more");
}

/// The server after `plan`, which took `output` off a CRTC that was its alone.
Snapshot withoutIt(Snapshot snapshot, const Xid output, const LayoutPlan& plan) {
    for (Crtc& crtc : snapshot.crtcs) {
        if (crtc.id == plan.crtc->crtc) {
            crtc.mode = plan.crtc->mode;
            crtc.outputs = plan.crtc->outputs;
            crtc.area = crtc.mode == 0 ? layout::Area{} : crtc.area;
        }
    }
    for (Output& each : snapshot.outputs) {
        each.crtc = each.id == output ? 0 : each.crtc;
    }
    return snapshot;
}

void checkWayBack(const Snapshot& now, DisplayID display, const layout::Memory& memory) {
    const layout::Layout layout = layoutOf(now);
    const layout::Output* output = layout.output(display);
    if (output == nullptr || !output->isConnected) {
        return;
    }
    for (const Wanted wanted : {Wanted::on, Wanted::onAnew}) {
        checkOn(now, layout, *output, decideSwitch(now, display, wanted, memory));
    }
}

void checkDecisions(const Snapshot& snapshot, const layout::Layout& layout) {
    for (const layout::Output& output : layout.outputs) {
        const LayoutDecision off = decideSwitch(snapshot, output.display, Wanted::off, {});
        if (!output.isConnected) {
            require(off.status == serverStatus::illegalArgument, "who is not there is unknown");
            continue;
        }
        checkOff(snapshot, layout, output, off);
        checkWayBack(snapshot, output.display, {});
        if (!off.plan.isEmpty()) {
            const Xid which = outputOf(snapshot, layout, output.display)->id;
            checkWayBack(withoutIt(snapshot, which, off.plan), output.display, off.memory);
        }
    }
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
    if (layout.outputs.size() <= enough) {
        checkDecisions(*snapshot, layout);
    }
}

}  // namespace
}  // namespace tavrel::x11

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tavrel::x11::check({data, size});
    return 0;
}
