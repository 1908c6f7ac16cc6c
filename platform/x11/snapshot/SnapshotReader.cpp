#include "platform/x11/snapshot/SnapshotReader.h"

#include <xcb/randr.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tavrel::x11 {

namespace {

template <typename Number>
std::vector<Number> list(const Number* first, int count) {
    return {first, first + std::max(count, 0)};
}

// Ours are RandR's numbers.
static_assert(layout::rotate0 == XCB_RANDR_ROTATION_ROTATE_0);
static_assert(layout::rotate90 == XCB_RANDR_ROTATION_ROTATE_90);
static_assert(layout::rotate180 == XCB_RANDR_ROTATION_ROTATE_180);
static_assert(layout::rotate270 == XCB_RANDR_ROTATION_ROTATE_270);
static_assert(layout::reflectX == XCB_RANDR_ROTATION_REFLECT_X);
static_assert(layout::reflectY == XCB_RANDR_ROTATION_REFLECT_Y);

/// The timings are stored by users: their order must never change.
layout::Mode toMode(const xcb_randr_mode_info_t& info) {
    return {.width = info.width,
            .height = info.height,
            .refreshMillihertz =
                layout::refreshMillihertz(info.dot_clock, std::int64_t{info.htotal} * info.vtotal),
            .timings = {info.dot_clock, info.hsync_start, info.hsync_end, info.htotal, info.hskew,
                        info.vsync_start, info.vsync_end, info.vtotal, info.mode_flags}};
}

Transform toTransform(const xcb_render_transform_t& from, const char* filter, int filterLength,
                      const std::int32_t* parameters, int count) {
    return {.matrix = {from.matrix11, from.matrix12, from.matrix13, from.matrix21, from.matrix22,
                       from.matrix23, from.matrix31, from.matrix32, from.matrix33},
            .filter = std::string(filter, static_cast<std::size_t>(std::max(filterLength, 0))),
            .parameters = list(parameters, count)};
}

/// Turns the server's list of what there is into a snapshot that holds only the numbers.
template <typename Reply>
std::optional<Snapshot> toOutline(const Reply& reply, const Xid* crtcs, const Xid* outputs,
                                  const xcb_randr_mode_info_t* modes) {
    Snapshot outline;
    outline.layoutTimestamp = reply.timestamp;
    outline.configTimestamp = reply.config_timestamp;
    for (const Xid id : list(crtcs, reply.num_crtcs)) {
        outline.crtcs.emplace_back().id = id;
    }
    for (const Xid id : list(outputs, reply.num_outputs)) {
        outline.outputs.emplace_back().id = id;
    }
    std::transform(modes, modes + reply.num_modes, std::back_inserter(outline.modes),
                   [](const xcb_randr_mode_info_t& mode) {
                       return Mode{.id = mode.id, .description = toMode(mode)};
                   });
    return outline;
}

std::optional<Snapshot> readOutline(Connection& connection, bool probing) {
    xcb_connection_t* xcb = connection.get();
    if (probing) {
        const auto reply = connection.reply<xcb_randr_get_screen_resources_reply_t>(
            xcb_randr_get_screen_resources(xcb, connection.root()).sequence);
        return reply == nullptr
                   ? std::nullopt
                   : toOutline(*reply, xcb_randr_get_screen_resources_crtcs(reply.get()),
                               xcb_randr_get_screen_resources_outputs(reply.get()),
                               xcb_randr_get_screen_resources_modes(reply.get()));
    }
    const auto reply = connection.reply<xcb_randr_get_screen_resources_current_reply_t>(
        xcb_randr_get_screen_resources_current(xcb, connection.root()).sequence);
    return reply == nullptr
               ? std::nullopt
               : toOutline(*reply, xcb_randr_get_screen_resources_current_crtcs(reply.get()),
                           xcb_randr_get_screen_resources_current_outputs(reply.get()),
                           xcb_randr_get_screen_resources_current_modes(reply.get()));
}

bool takeCrtc(Connection& connection, unsigned int info, Crtc& crtc) {
    const auto reply = connection.reply<xcb_randr_get_crtc_info_reply_t>(info);
    if (reply == nullptr || reply->status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        return false;
    }
    crtc.mode = reply->mode;
    crtc.rotation = reply->rotation;
    crtc.supportedRotations = reply->rotations;
    crtc.outputs = list(xcb_randr_get_crtc_info_outputs(reply.get()), reply->num_outputs);
    if (crtc.mode != 0) {
        crtc.area = {reply->x, reply->y, reply->width, reply->height};
    }
    return true;
}

bool takeTransform(Connection& connection, unsigned int request, Crtc& crtc) {
    const auto owned = connection.reply<xcb_randr_get_crtc_transform_reply_t>(request);
    const auto* reply = owned.get();
    if (reply == nullptr) {
        return false;
    }
    crtc.supportsTransforms = reply->has_transforms != 0;
    crtc.transform =
        crtc.mode != 0
            ? toTransform(reply->current_transform,
                          xcb_randr_get_crtc_transform_current_filter_name(reply),
                          reply->current_len, xcb_randr_get_crtc_transform_current_params(reply),
                          reply->current_nparams)
            : toTransform(reply->pending_transform,
                          xcb_randr_get_crtc_transform_pending_filter_name(reply),
                          reply->pending_len, xcb_randr_get_crtc_transform_pending_params(reply),
                          reply->pending_nparams);
    return true;
}

bool takeOutput(Connection& connection, unsigned int info, unsigned int edid, Output& output) {
    const auto reply = connection.reply<xcb_randr_get_output_info_reply_t>(info);
    const auto property = connection.reply<xcb_randr_get_output_property_reply_t>(edid);
    if (reply == nullptr || property == nullptr || reply->status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        return false;
    }
    const auto* name = xcb_randr_get_output_info_name(reply.get());
    output.name.assign(name, name + reply->name_len);
    output.connected = reply->connection == XCB_RANDR_CONNECTION_CONNECTED;
    output.crtc = reply->crtc;
    output.crtcs = list(xcb_randr_get_output_info_crtcs(reply.get()), reply->num_crtcs);
    output.modes = list(xcb_randr_get_output_info_modes(reply.get()), reply->num_modes);
    output.clones = list(xcb_randr_get_output_info_clones(reply.get()), reply->num_clones);
    constexpr int bitsInByte = 8;
    if (property->format == bitsInByte) {
        output.edid =
            layout::parseEdid(list(xcb_randr_get_output_property_data(property.get()),
                                   xcb_randr_get_output_property_data_length(property.get())));
    }
    return true;
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
        good &= takeCrtc(connection, crtcs[i].info, snapshot.crtcs[i]);
        good &= takeTransform(connection, crtcs[i].further, snapshot.crtcs[i]);
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

bool isContradictory(const Snapshot& snapshot) {
    return std::any_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const auto& output) {
        return !output.connected && snapshot.activeCrtc(output) != nullptr;
    });
}

}  // namespace

std::optional<Snapshot> readSnapshot(Connection& connection) {
    auto snapshot = readRepeatedly(connection, false);
    if (!snapshot.has_value() || !isContradictory(*snapshot) ||
        connection.hasProbed(snapshot->layoutTimestamp, snapshot->configTimestamp)) {
        return snapshot;
    }
    auto fresh = readRepeatedly(connection, true);
    const Snapshot& known = fresh.has_value() ? *fresh : *snapshot;
    connection.noteProbed(known.layoutTimestamp, known.configTimestamp);
    return fresh;
}

}  // namespace tavrel::x11
