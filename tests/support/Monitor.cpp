#include "tests/support/Monitor.h"

#include <xcb/randr.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>
#include <span>
#include <stdexcept>

#include "tests/support/XConnection.h"

namespace tavrel::support {

namespace {

double refreshRate(const xcb_randr_mode_info_t& mode) {
    const double dots = static_cast<double>(mode.htotal) * static_cast<double>(mode.vtotal);
    return dots > 0 ? static_cast<double>(mode.dot_clock) / dots : 0;
}

class Reader {
public:
    explicit Reader(const std::string& displayName) : connection_(displayName) {
        const auto* extension = xcb_get_extension_data(connection_.get(), &xcb_randr_id);
        if (extension == nullptr || extension->present == 0) {
            throw std::runtime_error("the X server has no RandR");
        }
        // Nothing may change between two questions; the grab ends with the connection.
        xcb_grab_server(connection_.get());
        resources_.reset(xcb_randr_get_screen_resources_current_reply(
            connection_.get(),
            xcb_randr_get_screen_resources_current(connection_.get(), connection_.root()),
            nullptr));
        const XcbReply<xcb_randr_get_output_primary_reply_t> primary(
            xcb_randr_get_output_primary_reply(
                connection_.get(),
                xcb_randr_get_output_primary(connection_.get(), connection_.root()), nullptr));
        if (!resources_ || !primary) {
            throw std::runtime_error("the X server does not answer RandR requests");
        }
        primary_ = primary->output;
    }

    std::vector<Monitor> connected() const {
        std::vector<Monitor> monitors;
        const std::span outputs(xcb_randr_get_screen_resources_current_outputs(resources_.get()),
                                resources_->num_outputs);
        for (const xcb_randr_output_t output : outputs) {
            Monitor monitor = read(output);
            if (monitor.connected) {
                monitors.push_back(std::move(monitor));
            }
        }
        return monitors;
    }

private:
    Monitor read(xcb_randr_output_t output) const {
        const XcbReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            connection_.get(),
            xcb_randr_get_output_info(connection_.get(), output, XCB_CURRENT_TIME), nullptr));
        Monitor monitor;
        if (!info) {
            return monitor;
        }
        const std::span name(xcb_randr_get_output_info_name(info.get()), info->name_len);
        monitor.name.assign(name.begin(), name.end());
        monitor.connected = info->connection == XCB_RANDR_CONNECTION_CONNECTED;
        monitor.primary = output == primary_;
        if (info->crtc != XCB_NONE) {
            readCrtc(info->crtc, monitor);
        }
        return monitor;
    }

    void readCrtc(xcb_randr_crtc_t crtc, Monitor& monitor) const {
        const XcbReply<xcb_randr_get_crtc_info_reply_t> info(xcb_randr_get_crtc_info_reply(
            connection_.get(), xcb_randr_get_crtc_info(connection_.get(), crtc, XCB_CURRENT_TIME),
            nullptr));
        if (!info || info->mode == XCB_NONE) {
            return;
        }
        monitor.on = true;
        monitor.x = info->x;
        monitor.y = info->y;
        monitor.rotation = info->rotation;
        const std::span modes(xcb_randr_get_screen_resources_current_modes(resources_.get()),
                              resources_->num_modes);
        const auto mode = std::find_if(modes.begin(), modes.end(),
                                       [&](const auto& each) { return each.id == info->mode; });
        if (mode != modes.end()) {
            monitor.width = mode->width;
            monitor.height = mode->height;
            monitor.refresh = refreshRate(*mode);
        }
    }

    XConnection connection_;
    XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources_;
    xcb_randr_output_t primary_ = XCB_NONE;
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const Monitor& monitor) {
    out << monitor.name << (monitor.connected ? "" : " disconnected");
    if (!monitor.on) {
        out << " off";
    } else {
        std::array<char, 64> text{};
        std::snprintf(text.data(), text.size(), " on %dx%d@%.2f +%d+%d", monitor.width,
                      monitor.height, monitor.refresh, monitor.x, monitor.y);
        out << text.data();
        if (monitor.rotation != XCB_RANDR_ROTATION_ROTATE_0) {
            out << " rotation " << monitor.rotation;
        }
    }
    return out << (monitor.primary ? " primary" : "");
}

std::vector<Monitor> readMonitors(const std::string& displayName) {
    return Reader(displayName).connected();
}

ScreenSize readScreenSize(const std::string& displayName) {
    const XConnection connection(displayName);
    const XcbReply<xcb_get_geometry_reply_t> geometry(xcb_get_geometry_reply(
        connection.get(), xcb_get_geometry(connection.get(), connection.root()), nullptr));
    if (!geometry) {
        throw std::runtime_error("the X server does not tell its screen's size");
    }
    return {geometry->width, geometry->height};
}

}  // namespace tavrel::support
