#include "platform/x11/snapshot/SnapshotReader.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/x11/snapshot/Replies.h"

namespace tavrel::x11 {

namespace {

/// An answer that is taken whole, awaited.
class Answer {
public:
    Answer(Connection& connection, unsigned int request)
        : reply_(connection.reply<xcb_generic_reply_t>(request)) {}

    /// Empty when it was an error, or the connection is lost.
    ReplyBytes bytes() const { return reply_ != nullptr ? bytesOf(*reply_) : ReplyBytes(); }

private:
    XcbReply<xcb_generic_reply_t> reply_;
};

unsigned int askOutline(Connection& connection, bool probing) {
    xcb_connection_t* xcb = connection.get();
    return probing ? xcb_randr_get_screen_resources(xcb, connection.root()).sequence
                   : xcb_randr_get_screen_resources_current(xcb, connection.root()).sequence;
}

/// The requests about all that an outline names.
struct Details {
    struct Pair {
        unsigned int info;
        unsigned int further;
    };
    std::vector<Pair> crtcs;
    std::vector<Pair> outputs;
    unsigned int primary = 0;
    unsigned int geometry = 0;
    unsigned int range = 0;
};

/// Sends all of them; none is awaited, so that it takes one round trip.
Details askDetails(Connection& connection, const Snapshot& outline) {
    xcb_connection_t* xcb = connection.get();
    Details asked;
    for (const Crtc& crtc : outline.crtcs) {
        asked.crtcs.push_back(
            {xcb_randr_get_crtc_info(xcb, crtc.id, outline.configTimestamp).sequence,
             xcb_randr_get_crtc_transform(xcb, crtc.id).sequence});
    }
    for (const Output& output : outline.outputs) {
        constexpr std::uint32_t firstBlockInWords = 32;
        asked.outputs.push_back(
            {xcb_randr_get_output_info(xcb, output.id, outline.configTimestamp).sequence,
             xcb_randr_get_output_property(xcb, output.id, connection.edidAtom(), XCB_ATOM_ANY, 0,
                                           firstBlockInWords, 0, 0)
                 .sequence});
    }
    asked.primary = xcb_randr_get_output_primary(xcb, connection.root()).sequence;
    asked.geometry = xcb_get_geometry(xcb, connection.root()).sequence;
    asked.range = xcb_randr_get_screen_size_range(xcb, connection.root()).sequence;
    return asked;
}

void discard(Connection& connection, const Details& asked) {
    xcb_connection_t* xcb = connection.get();
    for (const auto* pairs : {&asked.crtcs, &asked.outputs}) {
        for (const Details::Pair& each : *pairs) {
            xcb_discard_reply(xcb, each.info);
            xcb_discard_reply(xcb, each.further);
        }
    }
    for (const unsigned int each : {asked.primary, asked.geometry, asked.range}) {
        xcb_discard_reply(xcb, each);
    }
}

/// Whether the same questions are to be put about both.
bool areAlike(const Snapshot& a, const Snapshot& b) {
    const auto haveOneId = [](const auto& one, const auto& other) { return one.id == other.id; };
    return a.configTimestamp == b.configTimestamp &&
           std::equal(a.crtcs.begin(), a.crtcs.end(), b.crtcs.begin(), b.crtcs.end(), haveOneId) &&
           std::equal(a.outputs.begin(), a.outputs.end(), b.outputs.begin(), b.outputs.end(),
                      haveOneId);
}

bool takeCrtc(Connection& connection, unsigned int info, unsigned int transform, Crtc& crtc) {
    // Both are taken, whatever the first says.
    const Answer first(connection, info);
    const Answer second(connection, transform);
    return readCrtcInfo(first.bytes(), crtc) && readCrtcTransform(second.bytes(), crtc);
}

bool takeOutput(Connection& connection, unsigned int info, unsigned int edid, Output& output) {
    const Answer first(connection, info);
    const Answer second(connection, edid);
    return readOutputInfo(first.bytes(), output) && readOutputEdid(second.bytes(), output);
}

bool takeScreen(Connection& connection, unsigned int geometry, unsigned int range,
                Snapshot& snapshot) {
    const auto size = connection.reply<xcb_get_geometry_reply_t>(geometry);
    const auto limits = connection.reply<xcb_randr_get_screen_size_range_reply_t>(range);
    if (size == nullptr || limits == nullptr) {
        return false;
    }
    const auto [millimetresWide, millimetresHigh] = connection.millimetres();
    snapshot.screen = {size->width, size->height, millimetresWide, millimetresHigh};
    snapshot.minWidth = limits->min_width;
    snapshot.minHeight = limits->min_height;
    snapshot.maxWidth = limits->max_width;
    snapshot.maxHeight = limits->max_height;
    return true;
}

bool takePrimary(Connection& connection, unsigned int request, Snapshot& snapshot) {
    const auto reply = connection.reply<xcb_randr_get_output_primary_reply_t>(request);
    if (reply == nullptr) {
        return false;
    }
    snapshot.primary = reply->output;
    return true;
}

/// Where the outline is that of `expected`, which may be null, it takes one round trip, else two.
std::optional<Snapshot> readOnce(Connection& connection, bool probing, const Snapshot* expected) {
    const unsigned int outlineAsked = askOutline(connection, probing);
    std::optional<Details> asked;
    if (expected != nullptr) {
        asked = askDetails(connection, *expected);
    }
    std::optional<Snapshot> outline = readResources(Answer(connection, outlineAsked).bytes());
    if (asked.has_value() && !(outline.has_value() && areAlike(*outline, *expected))) {
        discard(connection, *asked);
        asked.reset();
    }
    if (!outline.has_value()) {
        return std::nullopt;
    }
    if (!asked.has_value()) {
        asked = askDetails(connection, *outline);
    }
    Snapshot& snapshot = *outline;

    // Every answer is taken, also after one that was an error: each waits to be freed.
    bool good = true;
    for (std::size_t i = 0; i < snapshot.crtcs.size(); ++i) {
        const Details::Pair& crtc = asked->crtcs[i];
        good &= takeCrtc(connection, crtc.info, crtc.further, snapshot.crtcs[i]);
    }
    for (std::size_t i = 0; i < snapshot.outputs.size(); ++i) {
        const Details::Pair& output = asked->outputs[i];
        good &= takeOutput(connection, output.info, output.further, snapshot.outputs[i]);
    }
    good &= takePrimary(connection, asked->primary, snapshot);
    good &= takeScreen(connection, asked->geometry, asked->range, snapshot);
    return good ? outline : std::nullopt;
}

std::optional<Snapshot> readRepeatedly(Connection& connection, bool probing,
                                       const Snapshot* expected) {
    // Between two requests an output may vanish, and asking about it is an error then.
    constexpr int attempts = 5;
    for (int i = 0; i < attempts && !connection.isLost(); ++i) {
        if (auto snapshot = readOnce(connection, probing, expected); snapshot.has_value()) {
            return snapshot;
        }
        expected = nullptr;
    }
    return std::nullopt;
}

/// Notes what a look for monitors has found.
std::optional<Snapshot> noted(Connection& connection, std::optional<Snapshot> found) {
    if (found.has_value()) {
        connection.noteProbed(found->layoutTimestamp, found->configTimestamp);
    }
    return found;
}

std::optional<Snapshot> probe(Connection& connection, const Snapshot* expected) {
    return noted(connection, readRepeatedly(connection, true, expected));
}

bool isContradictory(const Snapshot& snapshot) {
    return std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const auto& output) {
        return !output.connected && snapshot.activeCrtc(output) != nullptr;
    });
}

}  // namespace

std::optional<Snapshot> readSnapshot(Connection& connection, Probing probing,
                                     const Snapshot* expected) {
    if (probing == Probing::always && !connection.hasProbedLately()) {
        return probe(connection, expected);
    }
    auto snapshot = readRepeatedly(connection, false, expected);
    if (probing == Probing::never || !snapshot.has_value() || !isContradictory(*snapshot) ||
        connection.hasProbed(snapshot->layoutTimestamp, snapshot->configTimestamp)) {
        return snapshot;
    }
    auto fresh = probe(connection, &*snapshot);
    if (!fresh.has_value()) {
        connection.noteProbed(snapshot->layoutTimestamp, snapshot->configTimestamp);
    }
    return fresh;
}

std::optional<Snapshot> lookForMonitors(Connection& connection) {
    return noted(connection,
                 readResources(Answer(connection, askOutline(connection, true)).bytes()));
}

}  // namespace tavrel::x11
