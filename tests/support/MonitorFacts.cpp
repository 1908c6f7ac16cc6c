#include "tests/support/MonitorFacts.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <stdexcept>

#include "tests/support/XConnection.h"

namespace tavrel::support {

namespace {

constexpr std::size_t blockSize = 128;

/// The first of the four places for descriptions; one that begins with zeros is none of a mode.
constexpr std::size_t descriptor = 54;
constexpr std::size_t descriptorSize = 18;
constexpr std::uint8_t isName = 0xFC;

void addName(std::vector<std::uint8_t>& block, const std::string& name) {
    constexpr std::size_t head = 5;
    const auto place = block.begin() + descriptor;
    place[3] = isName;
    std::fill(place + head, place + descriptorSize, ' ');
    std::copy(name.begin(), name.end(), place + head);
    if (name.size() < descriptorSize - head) {
        place[static_cast<std::ptrdiff_t>(head + name.size())] = '\n';
    }
}

xcb_atom_t edidAtom(const XConnection& connection) {
    const std::string name = "EDID";
    const auto cookie =
        xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
    const XcbReply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection.get(), cookie, nullptr));
    return reply == nullptr ? xcb_atom_t{XCB_ATOM_NONE} : reply->atom;
}

xcb_randr_output_t outputNamed(const XConnection& connection, const std::string& wanted) {
    xcb_connection_t* xcb = connection.get();
    const XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            xcb, xcb_randr_get_screen_resources_current(xcb, connection.root()), nullptr));
    const xcb_randr_output_t* outputs =
        resources == nullptr ? nullptr
                             : xcb_randr_get_screen_resources_current_outputs(resources.get());
    for (int i = 0; outputs != nullptr && i < resources->num_outputs; ++i) {
        const XcbReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            xcb, xcb_randr_get_output_info(xcb, outputs[i], resources->config_timestamp), nullptr));
        const auto* name = info == nullptr ? nullptr : xcb_randr_get_output_info_name(info.get());
        if (name != nullptr &&
            std::equal(wanted.begin(), wanted.end(), name, name + info->name_len)) {
            return outputs[i];
        }
    }
    throw std::runtime_error("the X server has no output " + wanted);
}

}  // namespace

std::vector<std::uint8_t> edidOf(const MonitorFacts& facts) {
    std::vector<std::uint8_t> block{0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0};
    unsigned maker = 0;
    for (const char letter : facts.maker) {
        maker = maker << 5 | static_cast<unsigned>(letter - 'A' + 1);
    }
    block.resize(blockSize - 1);
    const auto put = [&](std::size_t at, std::uint32_t byte) {
        block[at] = static_cast<std::uint8_t>(byte);
    };
    put(8, maker >> 8);
    put(9, maker);
    put(10, facts.product);
    put(11, facts.product >> 8U);
    for (unsigned byte = 0; byte < 4; ++byte) {
        put(12 + byte, facts.serial >> (8 * byte));
    }
    if (!facts.name.empty()) {
        addName(block, facts.name);
    }
    const unsigned sum = std::accumulate(block.begin(), block.end(), 0U);
    block.push_back(static_cast<std::uint8_t>(256 - sum % 256));
    return block;
}

void showEdid(const std::string& displayName, const std::string& output,
              const std::optional<MonitorFacts>& facts) {
    const XConnection connection(displayName);
    const xcb_randr_output_t number = outputNamed(connection, output);
    const xcb_atom_t property = edidAtom(connection);
    if (facts.has_value()) {
        const std::vector<std::uint8_t> block = edidOf(*facts);
        constexpr std::uint8_t bitsInByte = 8;
        xcb_randr_change_output_property(connection.get(), number, property, XCB_ATOM_INTEGER,
                                         bitsInByte, XCB_PROP_MODE_REPLACE,
                                         static_cast<std::uint32_t>(block.size()), block.data());
    } else {
        xcb_randr_delete_output_property(connection.get(), number, property);
    }
    connection.roundTrip();
}

}  // namespace tavrel::support
