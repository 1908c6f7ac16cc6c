#include "tests/support/AppWindow.h"

#include <algorithm>
#include <cstring>
#include <iosfwd>
#include <ostream>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

#include "tests/support/XConnection.h"

namespace tavrel::support {

namespace {

xcb_atom_t atom(const XConnection& connection, const std::string& name) {
    const XcbReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(
        connection.get(),
        xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(name.size()), name.c_str()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// The 32-bit values of a property; empty when it is absent.
std::vector<std::uint32_t> property(const XConnection& connection, xcb_window_t window,
                                    const std::string& name) {
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        connection.get(),
        xcb_get_property(connection.get(), 0, window, atom(connection, name), XCB_ATOM_ANY, 0, 64),
        nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    std::vector<std::uint32_t> values(reply->value_len);
    std::memcpy(values.data(), xcb_get_property_value(reply.get()),
                values.size() * sizeof values[0]);
    return values;
}

bool isVisible(const XConnection& connection, xcb_window_t window) {
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(xcb_get_window_attributes_reply(
        connection.get(), xcb_get_window_attributes(connection.get(), window), nullptr));
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Bounds& bounds) {
    return out << bounds.width << "x" << bounds.height << "+" << bounds.x << "+" << bounds.y;
}

AppWindow::AppWindow(std::string displayName, xcb_window_t window)
    : displayName_(std::move(displayName)), window_(window) {}

std::optional<AppWindow> AppWindow::find(const std::string& displayName, pid_t process) {
    const std::vector<AppWindow> all = findAll(displayName, process);
    return all.empty() ? std::nullopt : std::optional(all.front());
}

std::vector<AppWindow> AppWindow::findAll(const std::string& displayName, pid_t process) {
    const XConnection connection(displayName);
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        connection.get(), xcb_query_tree(connection.get(), connection.root()), nullptr));
    if (!tree) {
        return {};
    }
    std::vector<AppWindow> found;
    const std::span windows(xcb_query_tree_children(tree.get()), tree->children_len);
    for (const xcb_window_t window : windows) {
        const auto owner = property(connection, window, "_NET_WM_PID");
        if (!owner.empty() && static_cast<pid_t>(owner.front()) == process &&
            isVisible(connection, window)) {
            found.push_back(AppWindow(displayName, window));
        }
    }
    return found;
}

bool AppWindow::isAbove(const AppWindow& other) const {
    const XConnection connection(displayName_);
    const XcbReply<xcb_query_tree_reply_t> tree(xcb_query_tree_reply(
        connection.get(), xcb_query_tree(connection.get(), connection.root()), nullptr));
    if (!tree) {
        return false;
    }
    // The uppermost comes last.
    const std::span windows(xcb_query_tree_children(tree.get()), tree->children_len);
    const auto ours = std::find(windows.begin(), windows.end(), window_);
    return ours != windows.end() && std::find(windows.begin(), ours, other.window_) != ours;
}

Bounds AppWindow::bounds() const {
    const XConnection connection(displayName_);
    const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
        connection.get(), xcb_get_geometry(connection.get(), window_), nullptr));
    const XcbReply<xcb_translate_coordinates_reply_t> place(xcb_translate_coordinates_reply(
        connection.get(),
        xcb_translate_coordinates(connection.get(), window_, connection.root(), 0, 0), nullptr));
    if (!geometry || !place) {
        throw std::runtime_error("the window has gone");
    }
    return {place->dst_x, place->dst_y, geometry->width, geometry->height};
}

std::optional<Bounds> AppWindow::fixedSize() const {
    // WM_NORMAL_HINTS: flags, four obsolete numbers, then the least and the greatest size.
    constexpr std::uint32_t leastAndGreatest = 0x30;
    const auto hints = property(XConnection(displayName_), window_, "WM_NORMAL_HINTS");
    if (hints.size() < 9 || (hints[0] & leastAndGreatest) != leastAndGreatest ||
        hints[5] != hints[7] || hints[6] != hints[8]) {
        return std::nullopt;
    }
    return Bounds{0, 0, static_cast<int>(hints[5]), static_cast<int>(hints[6])};
}

bool AppWindow::refusesMaximising() const {
    // _MOTIF_WM_HINTS: flags (1: the functions are given), functions. Function 1 means
    // all but those listed, 16 maximising.
    const auto hints = property(XConnection(displayName_), window_, "_MOTIF_WM_HINTS");
    if (hints.size() < 2 || (hints[0] & 1U) == 0) {
        return false;
    }
    const bool named = (hints[1] & 16U) != 0;
    const bool allBut = (hints[1] & 1U) != 0;
    return named == allBut;
}

void AppWindow::close() const {
    const XConnection connection(displayName_);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window_;
    message.type = atom(connection, "WM_PROTOCOLS");
    message.data.data32[0] = atom(connection, "WM_DELETE_WINDOW");
    xcb_send_event(connection.get(), 0, window_, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&message));
    connection.roundTrip();
}

void AppWindow::focus() const {
    const XConnection connection(displayName_);
    xcb_set_input_focus(connection.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window_, XCB_CURRENT_TIME);
    connection.roundTrip();
}

}  // namespace tavrel::support
