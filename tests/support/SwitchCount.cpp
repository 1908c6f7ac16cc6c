#include "tests/support/SwitchCount.h"

#include <stdexcept>

namespace tavrel::support {

SwitchCount::SwitchCount(const std::string& displayName) : connection_(displayName) {
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
    const xcb_randr_crtc_t* crtcs = xcb_randr_get_screen_resources_current_crtcs(resources.get());
    for (int index = 0; index < resources->num_crtcs; ++index) {
        const XcbReply<xcb_randr_get_crtc_info_reply_t> info(xcb_randr_get_crtc_info_reply(
            xcb, xcb_randr_get_crtc_info(xcb, crtcs[index], resources->config_timestamp), nullptr));
        isOn_[crtcs[index]] = info != nullptr && info->mode != XCB_NONE;
    }
}

int SwitchCount::switchedOn() {
    connection_.roundTrip();
    while (XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        if ((event->response_type & 0x7f) == firstEvent_ + XCB_RANDR_NOTIFY) {
            const auto* notify = reinterpret_cast<xcb_randr_notify_event_t*>(event.get());
            if (notify->subCode == XCB_RANDR_NOTIFY_CRTC_CHANGE) {
                note(notify->u.cc);
            }
        }
    }
    return switchedOn_;
}

void SwitchCount::note(const xcb_randr_crtc_change_t& change) {
    const bool isOn = change.mode != XCB_NONE;
    bool& wasOn = isOn_[change.crtc];
    switchedOn_ += isOn && !wasOn ? 1 : 0;
    wasOn = isOn;
}

}  // namespace tavrel::support
