#include "tests/platform/x11/snapshot/ReplyBuilder.h"

#include <xcb/randr.h>

#include <cstring>
#include <numeric>
#include <string>

namespace tavrel::x11 {

namespace {

template <typename Part>
void append(Reply& reply, const Part& part) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&part);
    reply.insert(reply.end(), bytes, bytes + sizeof part);
}

template <typename Item>
void appendAll(Reply& reply, const std::vector<Item>& items) {
    for (const Item& item : items) {
        append(reply, item);
    }
}

template <typename Number>
std::uint16_t count(const Number& items) {
    return static_cast<std::uint16_t>(items.size());
}

xcb_render_transform_t toWire(const std::array<std::int32_t, 9>& matrix) {
    xcb_render_transform_t wire{};
    static_assert(sizeof wire == sizeof matrix);
    std::memcpy(&wire, matrix.data(), sizeof wire);
    return wire;
}

void appendTransform(Reply& reply, const Transform& transform) {
    reply.insert(reply.end(), transform.filter.begin(), transform.filter.end());
    reply.resize((reply.size() + 3) / 4 * 4);
    appendAll(reply, transform.parameters);
}

}  // namespace

Reply resourcesReply(const Snapshot& snapshot) {
    xcb_randr_get_screen_resources_reply_t head{};
    head.timestamp = snapshot.layoutTimestamp;
    head.config_timestamp = snapshot.configTimestamp;
    head.num_crtcs = count(snapshot.crtcs);
    head.num_outputs = count(snapshot.outputs);
    head.num_modes = count(snapshot.modes);
    Reply reply;
    append(reply, head);
    for (const Crtc& crtc : snapshot.crtcs) {
        append(reply, crtc.id);
    }
    for (const Output& output : snapshot.outputs) {
        append(reply, output.id);
    }
    for (const Mode& mode : snapshot.modes) {
        const auto timing = [&mode](std::size_t index) {
            return static_cast<std::uint16_t>(mode.description.timings.at(index));
        };
        xcb_randr_mode_info_t info{};
        info.id = mode.id;
        info.width = static_cast<std::uint16_t>(mode.description.width);
        info.height = static_cast<std::uint16_t>(mode.description.height);
        info.dot_clock = static_cast<std::uint32_t>(mode.description.timings.at(0));
        info.hsync_start = timing(1);
        info.hsync_end = timing(2);
        info.htotal = timing(3);
        info.hskew = timing(4);
        info.vsync_start = timing(5);
        info.vsync_end = timing(6);
        info.vtotal = timing(7);
        info.mode_flags = static_cast<std::uint32_t>(mode.description.timings.at(8));
        append(reply, info);
    }
    return reply;
}

Reply crtcInfoReply(const Crtc& crtc) {
    xcb_randr_get_crtc_info_reply_t head{};
    head.x = static_cast<std::int16_t>(crtc.area.x);
    head.y = static_cast<std::int16_t>(crtc.area.y);
    head.width = static_cast<std::uint16_t>(crtc.area.width);
    head.height = static_cast<std::uint16_t>(crtc.area.height);
    head.mode = crtc.mode;
    head.rotation = crtc.rotation;
    head.rotations = crtc.supportedRotations;
    head.num_outputs = count(crtc.outputs);
    Reply reply;
    append(reply, head);
    appendAll(reply, crtc.outputs);
    return reply;
}

Reply crtcTransformReply(const Crtc& crtc) {
    xcb_randr_get_crtc_transform_reply_t head{};
    head.has_transforms = crtc.supportsTransforms ? 1 : 0;
    head.pending_transform = toWire(crtc.transform.matrix);
    head.current_transform = head.pending_transform;
    head.pending_len = count(crtc.transform.filter);
    head.current_len = head.pending_len;
    head.pending_nparams = count(crtc.transform.parameters);
    head.current_nparams = head.pending_nparams;
    Reply reply;
    append(reply, head);
    appendTransform(reply, crtc.transform);
    appendTransform(reply, crtc.transform);
    return reply;
}

Reply outputInfoReply(const Output& output) {
    xcb_randr_get_output_info_reply_t head{};
    head.connection =
        output.connected ? XCB_RANDR_CONNECTION_CONNECTED : XCB_RANDR_CONNECTION_DISCONNECTED;
    head.crtc = output.crtc;
    head.num_crtcs = count(output.crtcs);
    head.num_modes = count(output.modes);
    head.num_clones = count(output.clones);
    head.name_len = count(output.name);
    Reply reply;
    append(reply, head);
    appendAll(reply, output.crtcs);
    appendAll(reply, output.modes);
    appendAll(reply, output.clones);
    reply.insert(reply.end(), output.name.begin(), output.name.end());
    return reply;
}

std::vector<std::uint8_t> edidBlock(const layout::EdidNumbers& numbers) {
    const auto byte = [](std::uint32_t number, unsigned index) {
        return static_cast<std::uint8_t>(number >> (8 * index));
    };
    std::vector<std::uint8_t> block{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    block.reserve(128);
    block.insert(block.end(), {byte(numbers.vendor, 1), byte(numbers.vendor, 0),
                               byte(numbers.product, 0), byte(numbers.product, 1)});
    for (unsigned index = 0; index < 4; ++index) {
        block.push_back(byte(numbers.serial, index));
    }
    block.resize(127);
    const unsigned sum = std::accumulate(block.begin(), block.end(), 0U);
    block.push_back(static_cast<std::uint8_t>(256 - sum % 256));
    return block;
}

Reply edidReply(const layout::EdidNumbers& numbers) {
    const std::vector<std::uint8_t> block = edidBlock(numbers);
    xcb_randr_get_output_property_reply_t head{};
    head.format = 8;
    head.num_items = static_cast<std::uint32_t>(block.size());
    Reply reply;
    append(reply, head);
    reply.insert(reply.end(), block.begin(), block.end());
    return reply;
}

}  // namespace tavrel::x11
