#include "tests/bench/WindowWatch.h"

#include <poll.h>

#include <algorithm>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace tavrel::bench {

namespace {

using support::XcbReply;

constexpr std::chrono::seconds timeout{20};
/// Smaller ones are not what a program opens for the user.
constexpr int leastSize = 100;

int millisecondsUntil(Time deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

}  // namespace

WindowWatch::WindowWatch(const std::string& displayName) : connection_(displayName) {
    xcb_connection_t* xcb = connection_.get();
    const auto* extension = xcb_get_extension_data(xcb, &xcb_damage_id);
    if (extension == nullptr || extension->present == 0) {
        throw std::runtime_error("the X server does not report damage");
    }
    firstDamageEvent_ = extension->first_event;
    const XcbReply<xcb_damage_query_version_reply_t> version(
        xcb_damage_query_version_reply(xcb, xcb_damage_query_version(xcb, 1, 1), nullptr));
    const std::uint32_t children = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, connection_.root(), XCB_CW_EVENT_MASK, &children);
    connection_.roundTrip();
}

WindowWatch::Opening WindowWatch::awaitOpening(std::chrono::milliseconds quiet) {
    struct Frame {
        Time time;
        std::size_t picture;
    };
    const Time begin = Clock::now();
    xcb_window_t window = XCB_NONE;
    Opening opening;
    std::vector<Frame> frames;
    Time deadline = begin + timeout;
    while (const std::optional<Event> event = next(deadline)) {
        if (event->isMap && window == XCB_NONE && isMainWindow(event->window)) {
            window = event->window;
            opening.mapped = event->time;
        }
        if (window != XCB_NONE && event->window == window) {
            frames.push_back({event->time, picture(window)});
            deadline = std::min(Clock::now() + quiet, begin + timeout);
        }
    }
    if (window == XCB_NONE || Clock::now() >= begin + timeout) {
        throw std::runtime_error(window == XCB_NONE ? "no window opens"
                                                    : "the window does not come to rest");
    }
    const auto last = std::find_if(frames.rbegin(), frames.rend(), [&](const Frame& each) {
        return each.picture != frames.back().picture;
    });
    opening.painted = last.base()->time;
    opening.paints = static_cast<int>(last.base() - frames.begin());
    return opening;
}

void WindowWatch::awaitRest(std::chrono::milliseconds quiet) {
    const Time end = Clock::now() + timeout;
    while (next(Clock::now() + quiet)) {
        if (Clock::now() > end) {
            throw std::runtime_error("the window does not come to rest");
        }
    }
}

int WindowWatch::takePaints() {
    connection_.roundTrip();
    int paints = 0;
    while (const std::optional<Event> event = next(Clock::now())) {
        paints += event->isMap ? 0 : 1;
    }
    return paints;
}

/// std::nullopt at the deadline.
std::optional<WindowWatch::Event> WindowWatch::next(Time deadline) {
    for (;;) {
        while (const XcbReply<xcb_generic_event_t> event{xcb_poll_for_event(connection_.get())}) {
            if (const auto found = read(*event)) {
                return found;
            }
        }
        xcb_flush(connection_.get());
        pollfd ready{xcb_get_file_descriptor(connection_.get()), POLLIN, 0};
        if (::poll(&ready, 1, millisecondsUntil(deadline)) <= 0) {
            return std::nullopt;
        }
    }
}

std::optional<WindowWatch::Event> WindowWatch::read(const xcb_generic_event_t& event) {
    const Time now = Clock::now();
    const int type = event.response_type & 0x7f;
    if (type == XCB_CREATE_NOTIFY) {
        const auto& created = reinterpret_cast<const xcb_create_notify_event_t&>(event);
        if (created.override_redirect == 0 && created.parent == connection_.root()) {
            watch(created.window);
        }
    } else if (type == XCB_MAP_NOTIFY) {
        return Event{now, true, reinterpret_cast<const xcb_map_notify_event_t&>(event).window};
    } else if (type == firstDamageEvent_ + XCB_DAMAGE_NOTIFY) {
        const auto& damage = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
        xcb_damage_subtract(connection_.get(), damage.damage, XCB_NONE, XCB_NONE);
        return Event{now, false, damage.drawable};
    }
    return std::nullopt;
}

void WindowWatch::watch(xcb_window_t window) {
    const xcb_damage_damage_t damage = xcb_generate_id(connection_.get());
    xcb_damage_create(connection_.get(), damage, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
    xcb_flush(connection_.get());
}

bool WindowWatch::isMainWindow(xcb_window_t window) const {
    xcb_connection_t* xcb = connection_.get();
    const auto attributesAsked = xcb_get_window_attributes(xcb, window);
    const auto geometryAsked = xcb_get_geometry(xcb, window);
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(xcb, attributesAsked, nullptr));
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(xcb, geometryAsked, nullptr));
    return attributes && geometry && attributes->override_redirect == 0 &&
           geometry->width >= leastSize && geometry->height >= leastSize;
}

/// What it looks like now, as a number. 0 when it cannot be seen.
std::size_t WindowWatch::picture(xcb_window_t window) const {
    xcb_connection_t* xcb = connection_.get();
    const XcbReply<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, window), nullptr));
    if (!geometry) {
        return 0;
    }
    const XcbReply<xcb_get_image_reply_t> image(
        xcb_get_image_reply(xcb,
                            xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                                          geometry->width, geometry->height, ~0U),
                            nullptr));
    if (!image) {
        return 0;
    }
    return std::hash<std::string_view>()(
        {reinterpret_cast<const char*>(xcb_get_image_data(image.get())),
         static_cast<std::size_t>(xcb_get_image_data_length(image.get()))});
}

}  // namespace tavrel::bench
