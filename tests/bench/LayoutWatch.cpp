#include "tests/bench/LayoutWatch.h"

#include <poll.h>

#include <span>
#include <stdexcept>

namespace tavrel::bench {

namespace {

using support::XcbReply;

constexpr int patienceMilliseconds = 20'000;

}  // namespace

LayoutWatch::LayoutWatch(const std::string& displayName) : connection_(displayName) {
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

void LayoutWatch::forget() {
    connection_.roundTrip();
    while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
        isSwitch(*event, true);
    }
}

Time LayoutWatch::awaitSwitch(bool on) {
    for (;;) {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            const Time now = Clock::now();
            if (isSwitch(*event, on)) {
                return now;
            }
        }
        pollfd ready{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        if (::poll(&ready, 1, patienceMilliseconds) <= 0) {
            throw std::runtime_error(on ? "no monitor is switched on" : "none is switched off");
        }
    }
}

bool LayoutWatch::isSwitch(const xcb_generic_event_t& event, bool on) {
    if ((event.response_type & 0x7f) != firstEvent_ + XCB_RANDR_NOTIFY) {
        return false;
    }
    const auto& notify = reinterpret_cast<const xcb_randr_notify_event_t&>(event);
    if (notify.subCode != XCB_RANDR_NOTIFY_CRTC_CHANGE) {
        return false;
    }
    const bool isOn = notify.u.cc.mode != XCB_NONE;
    bool& wasOn = isOn_[notify.u.cc.crtc];
    const bool hasChanged = isOn != wasOn;
    wasOn = isOn;
    return hasChanged && isOn == on;
}

}  // namespace tavrel::bench
