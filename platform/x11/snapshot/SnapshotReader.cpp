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

std::optional<Snapshot> readOutline(Connection& connection, bool probing) {
    xcb_connection_t* xcb = connection.get();
    const unsigned int request =
        probing ? xcb_randr_get_screen_resources(xcb, connection.root()).sequence
                : xcb_randr_get_screen_resources_current(xcb, connection.root()).sequence;
    return readResources(Answer(connection, request).bytes());
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

std::optional<Snapshot> readOnce(Connection& connection, bool probing) {
    std::optional<Snapshot> outline = readOutline(connection, probing);
    if (!outline.has_value()) {
        return std::nullopt;
    }
    Snapshot& snapshot = *outline;
    xcb_connection_t* xcb = connection.get();

    // All is asked before the first answer is awaited, so that it takes one round trip.
    struct Asked {
        unsigned int info;
        unsigned int further;
    };
    std::vector<Asked> crtcs;
    for (const Crtc& crtc : snapshot.crtcs) {
        crtcs.push_back({xcb_randr_get_crtc_info(xcb, crtc.id, snapshot.configTimestamp).sequence,
                         xcb_randr_get_crtc_transform(xcb, crtc.id).sequence});
    }
    std::vector<Asked> outputs;
    for (const Output& output : snapshot.outputs) {
        constexpr std::uint32_t firstBlockInWords = 32;
        outputs.push_back(
            {xcb_randr_get_output_info(xcb, output.id, snapshot.configTimestamp).sequence,
             xcb_randr_get_output_property(xcb, output.id, connection.edidAtom(), XCB_ATOM_ANY, 0,
                                           firstBlockInWords, 0, 0)
                 .sequence});
    }
    const unsigned int primary = xcb_randr_get_output_primary(xcb, connection.root()).sequence;
    const unsigned int geometry = xcb_get_geometry(xcb, connection.root()).sequence;
    const unsigned int range = xcb_randr_get_screen_size_range(xcb, connection.root()).sequence;

    // Every answer is taken, also after one that was an error: each waits to be freed.
    bool good = true;
    for (std::size_t i = 0; i < crtcs.size(); ++i) {
        good &= takeCrtc(connection, crtcs[i].info, crtcs[i].further, snapshot.crtcs[i]);
    }
    for (std::size_t i = 0; i < outputs.size(); ++i) {
        good &= takeOutput(connection, outputs[i].info, outputs[i].further, snapshot.outputs[i]);
    }
    good &= takePrimary(connection, primary, snapshot);
    good &= takeScreen(connection, geometry, range, snapshot);
    return good ? outline : std::nullopt;
}

std::optional<Snapshot> readRepeatedly(Connection& connection, bool probing) {
    // Between two requests an output may vanish, and asking about it is an error then.
    constexpr int attempts = 5;
    for (int i = 0; i < attempts && !connection.isLost(); ++i) {
        if (auto snapshot = readOnce(connection, probing); snapshot.has_value()) {
            return snapshot;
        }
    }
    return std::nullopt;
}

std::optional<Snapshot> probe(Connection& connection) {
    auto snapshot = readRepeatedly(connection, true);
    if (snapshot.has_value()) {
        connection.noteProbed(snapshot->layoutTimestamp, snapshot->configTimestamp);
    }
    return snapshot;
}

bool isContradictory(const Snapshot& snapshot) {
    return std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const auto& output) {
        return !output.connected && snapshot.activeCrtc(output) != nullptr;
    });
}

}  // namespace

std::optional<Snapshot> readSnapshot(Connection& connection, Probing probing) {
    if (probing == Probing::always && !connection.hasProbedLately()) {
        return probe(connection);
    }
    auto snapshot = readRepeatedly(connection, false);
    if (probing == Probing::never || !snapshot.has_value() || !isContradictory(*snapshot) ||
        connection.hasProbed(snapshot->layoutTimestamp, snapshot->configTimestamp)) {
        return snapshot;
    }
    auto fresh = probe(connection);
    if (!fresh.has_value()) {
        connection.noteProbed(snapshot->layoutTimestamp, snapshot->configTimestamp);
    }
    return fresh;
}

}  // namespace tavrel::x11
