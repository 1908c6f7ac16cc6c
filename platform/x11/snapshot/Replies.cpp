#include "platform/x11/snapshot/Replies.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "platform/layout/Identity.h"

namespace tavrel::x11 {

namespace {

// Ours are RandR's numbers.
static_assert(layout::rotate0 == XCB_RANDR_ROTATION_ROTATE_0);
static_assert(layout::rotate90 == XCB_RANDR_ROTATION_ROTATE_90);
static_assert(layout::rotate180 == XCB_RANDR_ROTATION_ROTATE_180);
static_assert(layout::rotate270 == XCB_RANDR_ROTATION_ROTATE_270);
static_assert(layout::reflectX == XCB_RANDR_ROTATION_REFLECT_X);
static_assert(layout::reflectY == XCB_RANDR_ROTATION_REFLECT_Y);

/// Takes a reply apart from its beginning, and notes when it ends too early. From then on all
/// it gives is zeros and empty lists.
class ReplyReader {
public:
    explicit ReplyReader(ReplyBytes reply) : rest_(reply), size_(reply.size()) {}

    template <typename Part>
    Part one() {
        Part part{};
        if (holds(sizeof part)) {
            std::memcpy(&part, take(sizeof part).data(), sizeof part);
        }
        return part;
    }

    template <typename Item>
    std::vector<Item> list(std::size_t count) {
        // Each count has 32 bits at most, so the product cannot wrap around.
        if (!holds(count * sizeof(Item))) {
            return {};
        }
        std::vector<Item> items(count);
        if (count != 0) {
            std::memcpy(items.data(), take(count * sizeof(Item)).data(), count * sizeof(Item));
        }
        return items;
    }

    std::string text(std::size_t length) {
        const std::vector<char> characters = list<char>(length);
        return {characters.begin(), characters.end()};
    }

    /// What follows a text begins at a multiple of four bytes.
    void skipPadding() {
        constexpr std::size_t unit = 4;
        const std::size_t padding = (unit - (size_ - rest_.size()) % unit) % unit;
        if (holds(padding)) {
            take(padding);
        }
    }

    bool isGood() const { return isGood_; }

private:
    bool holds(std::size_t size) {
        isGood_ = isGood_ && size <= rest_.size();
        return isGood_;
    }

    ReplyBytes take(std::size_t size) {
        const ReplyBytes taken = rest_.first(size);
        rest_ = rest_.subspan(size);
        return taken;
    }

    ReplyBytes rest_;
    std::size_t size_;
    bool isGood_ = true;
};

/// The timings are stored by users: their order must never change.
layout::Mode toMode(const xcb_randr_mode_info_t& info) {
    return {.width = info.width,
            .height = info.height,
            .refreshMillihertz =
                layout::refreshMillihertz(info.dot_clock, std::int64_t{info.htotal} * info.vtotal),
            .timings = {info.dot_clock, info.hsync_start, info.hsync_end, info.htotal, info.hskew,
                        info.vsync_start, info.vsync_end, info.vtotal, info.mode_flags}};
}

Transform readTransform(ReplyReader& reader, const xcb_render_transform_t& from,
                        std::size_t filterLength, std::size_t parameters) {
    Transform read;
    read.matrix = {from.matrix11, from.matrix12, from.matrix13, from.matrix21, from.matrix22,
                   from.matrix23, from.matrix31, from.matrix32, from.matrix33};
    read.filter = reader.text(filterLength);
    reader.skipPadding();
    read.parameters = reader.list<std::int32_t>(parameters);
    return read;
}

/// Where the server can't find out, whatever is driven is taken for a display: a user may be
/// looking at it.
bool countsAsConnected(const xcb_randr_get_output_info_reply_t& output) {
    return output.connection == XCB_RANDR_CONNECTION_CONNECTED ||
           (output.connection == XCB_RANDR_CONNECTION_UNKNOWN && output.crtc != XCB_NONE);
}

}  // namespace

std::optional<Snapshot> readResources(ReplyBytes reply) {
    ReplyReader reader(reply);
    // The reply to GetScreenResources is laid out alike.
    const auto head = reader.one<xcb_randr_get_screen_resources_current_reply_t>();
    Snapshot outline;
    outline.layoutTimestamp = head.timestamp;
    outline.configTimestamp = head.config_timestamp;
    for (const Xid id : reader.list<Xid>(head.num_crtcs)) {
        outline.crtcs.emplace_back().id = id;
    }
    for (const Xid id : reader.list<Xid>(head.num_outputs)) {
        outline.outputs.emplace_back().id = id;
    }
    const auto modes = reader.list<xcb_randr_mode_info_t>(head.num_modes);
    std::transform(modes.begin(), modes.end(), std::back_inserter(outline.modes),
                   [](const xcb_randr_mode_info_t& mode) {
                       return Mode{.id = mode.id, .description = toMode(mode)};
                   });
    return reader.isGood() ? std::optional(std::move(outline)) : std::nullopt;
}

bool readCrtcInfo(ReplyBytes reply, Crtc& crtc) {
    ReplyReader reader(reply);
    const auto head = reader.one<xcb_randr_get_crtc_info_reply_t>();
    std::vector<Xid> outputs = reader.list<Xid>(head.num_outputs);
    if (!reader.isGood() || head.status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        return false;
    }
    crtc.mode = head.mode;
    // What is no rotation could be remembered by nobody.
    crtc.rotation = layout::isRotation(head.rotation) ? head.rotation : layout::rotate0;
    crtc.supportedRotations = head.rotations;
    crtc.outputs = std::move(outputs);
    if (crtc.mode != 0) {
        crtc.area = {head.x, head.y, head.width, head.height};
    }
    return true;
}

bool readCrtcTransform(ReplyBytes reply, Crtc& crtc) {
    ReplyReader reader(reply);
    const auto head = reader.one<xcb_randr_get_crtc_transform_reply_t>();
    Transform pending =
        readTransform(reader, head.pending_transform, head.pending_len, head.pending_nparams);
    Transform current =
        readTransform(reader, head.current_transform, head.current_len, head.current_nparams);
    if (!reader.isGood()) {
        return false;
    }
    crtc.supportsTransforms = head.has_transforms != 0;
    crtc.transform = std::move(crtc.mode != 0 ? current : pending);
    return true;
}

bool readOutputInfo(ReplyBytes reply, Output& output) {
    ReplyReader reader(reply);
    const auto head = reader.one<xcb_randr_get_output_info_reply_t>();
    std::vector<Xid> crtcs = reader.list<Xid>(head.num_crtcs);
    std::vector<Xid> modes = reader.list<Xid>(head.num_modes);
    std::vector<Xid> clones = reader.list<Xid>(head.num_clones);
    std::string name = reader.text(head.name_len);
    if (!reader.isGood() || head.status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        return false;
    }
    output.name = std::move(name);
    output.connected = countsAsConnected(head);
    output.crtc = head.crtc;
    output.crtcs = std::move(crtcs);
    output.modes = std::move(modes);
    output.clones = std::move(clones);
    return true;
}

bool readOutputEdid(ReplyBytes reply, Output& output) {
    ReplyReader reader(reply);
    const auto head = reader.one<xcb_randr_get_output_property_reply_t>();
    constexpr int bitsInByte = 8;
    const auto bytes = reader.list<std::uint8_t>(head.format == bitsInByte ? head.num_items : 0);
    if (!reader.isGood()) {
        return false;
    }
    output.edid = layout::parseEdid(bytes);
    output.monitor = layout::monitorName(bytes);
    return true;
}

}  // namespace tavrel::x11
