#include "tests/support/CrtcSwitches.h"

#include <span>
#include <stdexcept>
#include <utility>

namespace tavrel::support {

CrtcSwitches::CrtcSwitches(const std::string& displayName) : connection_(displayName) {
    xcb_connection_t* xcb = connection_.get();
    const auto* extension = xcb_get_extension_data(xcb, &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) {
        throw std::runtime_error("the X server has no RandR");
    }
    firstEvent_ = extension->first_event;
    const XcbReply<xcb_randr_query_version_reply_t> version(
        xcb_randr_query_version_reply(xcb, xcb_randr_query_version(xcb, 1, 5), nullptr));
    xcb_randr_select_input(xcb, connection_.root(), XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
    const XcbReply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            xcb, xcb_randr_get_screen_resources_current(xcb, connection_.root()), nullptr));
    for (const xcb_randr_crtc_t crtc : std::span(
             xcb_randr_get_screen_resources_current_crtcs(resources.get()), resources->num_crtcs)) {
        const XcbReply<xcb_randr_get_crtc_info_reply_t> info(xcb_randr_get_crtc_info_reply(
            xcb, xcb_randr_get_crtc_info(xcb, crtc, resources->config_timestamp), nullptr));
        isOn_[crtc] = info != nullptr && info->mode != XCB_NONE;
    }
}

std::optional<bool> CrtcSwitches::next() {
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if (!isChange(*event)) {
            continue;
        }
        const auto& change = reinterpret_cast<const xcb_randr_notify_event_t&>(*event).u.cc;
        const bool isOn = change.mode != XCB_NONE;
        if (std::exchange(isOn_[change.crtc], isOn) != isOn) {
            return isOn;
        }
    }
    return std::nullopt;
}

bool CrtcSwitches::isChange(const xcb_generic_event_t& event) const {
    return (event.response_type & 0x7f) == firstEvent_ + XCB_RANDR_NOTIFY &&
           reinterpret_cast<const xcb_randr_notify_event_t&>(event).subCode ==
               XCB_RANDR_NOTIFY_CRTC_CHANGE;
}

}  // namespace tavrel::support
