#include "tests/bench/BareSwitch.h"

#include <span>
#include <stdexcept>

namespace tavrel::bench {

namespace {

using support::XcbReply;

XcbReply<xcb_randr_get_screen_resources_current_reply_t> resourcesOf(
    const support::XConnection& connection) {
    XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection.get(),
            xcb_randr_get_screen_resources_current(connection.get(), connection.root()), nullptr));
    if (!resources) {
        throw std::runtime_error("the X server does not tell its monitors");
    }
    return resources;
}

}  // namespace

BareSwitch::BareSwitch(const std::string& displayName, const std::string& output)
    : connection_(displayName) {
    xcb_connection_t* xcb = connection_.get();
    const XcbReply<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(xcb, xcb_randr_query_version(xcb, 1, 5), nullptr));
    const auto resources = resourcesOf(connection_);
    for (const xcb_randr_output_t each :
         std::span(xcb_randr_get_screen_resources_current_outputs(resources.get()),
                   resources->num_outputs)) {
        const XcbReply<xcb_randr_get_output_info_reply_t> info(xcb_randr_get_output_info_reply(
            xcb, xcb_randr_get_output_info(xcb, each, resources->config_timestamp), nullptr));
        if (info == nullptr || info->crtc == XCB_NONE) {
            continue;
        }
        const std::span name(xcb_randr_get_output_info_name(info.get()), info->name_len);
        if (std::string(name.begin(), name.end()) == output) {
            output_ = each;
            crtc_ = info->crtc;
            shown_.reset(xcb_randr_get_crtc_info_reply(
                xcb, xcb_randr_get_crtc_info(xcb, crtc_, resources->config_timestamp), nullptr));
        }
    }
    if (!shown_) {
        throw std::runtime_error(output + " is not on");
    }
}

void BareSwitch::set(bool on) const {
    const auto resources = resourcesOf(connection_);
    const XcbReply<xcb_randr_set_crtc_config_reply_t> done(xcb_randr_set_crtc_config_reply(
        connection_.get(),
        on ? xcb_randr_set_crtc_config(connection_.get(), crtc_, XCB_CURRENT_TIME,
                                       resources->config_timestamp, shown_->x, shown_->y,
                                       shown_->mode, shown_->rotation, 1, &output_)
           : xcb_randr_set_crtc_config(connection_.get(), crtc_, XCB_CURRENT_TIME,
                                       resources->config_timestamp, 0, 0, XCB_NONE,
                                       XCB_RANDR_ROTATION_ROTATE_0, 0, nullptr),
        nullptr));
    if (!done || done->status != XCB_RANDR_SET_CONFIG_SUCCESS) {
        throw std::runtime_error("the X server refuses to switch a monitor");
    }
}

}  // namespace tavrel::bench
