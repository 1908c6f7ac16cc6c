#include "platform/x11/connection/Connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <xcb/randr.h>
#include <xcb/xcbext.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <string_view>
#include <utility>

namespace tavrel::x11 {

namespace {

/// To authenticate, xcb uses a library that keeps a file name in a global variable, so only one
/// thread may connect at a time.
xcb_connection_t* connectAlone(const char* displayName, int* screen) {
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return xcb_connect(displayName, screen);
}

}  // namespace

std::unique_ptr<Connection> Connection::connect(const X11ServerOptions& options) {
    int screen = 0;
    xcb_connection_t* raw = connectAlone(
        options.displayName.has_value() ? options.displayName->c_str() : nullptr, &screen);
    std::unique_ptr<Connection> connection(new Connection(raw, options.timeout, screen));
    if (connection->isLost() || connection->defaultScreen_ >= connection->roots_.size()) {
        return nullptr;
    }
    connection->negotiateRandr();
    const bool isGone = connection->isLost() && !connection->hasTimedOut();
    return isGone ? nullptr : std::move(connection);
}

Connection::Connection(xcb_connection_t* connection, std::chrono::milliseconds timeout, int screen)
    : connection_(connection), timeout_(timeout), defaultScreen_(static_cast<std::size_t>(screen)) {
    if (isLost()) {
        return;
    }
    for (auto each = xcb_setup_roots_iterator(xcb_get_setup(connection_)); each.rem != 0;
         xcb_screen_next(&each)) {
        if (roots_.size() == defaultScreen_) {
            millimetres_ = {each.data->width_in_millimeters, each.data->height_in_millimeters};
        }
        roots_.push_back(each.data->root);
    }
}

Connection::~Connection() {
    xcb_disconnect(connection_);
}

void Connection::negotiateRandr() {
    const xcb_query_extension_reply_t* extension =
        xcb_get_extension_data(connection_, &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    firstRandrEvent_ = extension->first_event;
    const auto version =
        reply<xcb_randr_query_version_reply_t>(xcb_randr_query_version(connection_, 1, 5).sequence);
    // The first version with primary outputs, transforms and the quick list of resources.
    constexpr std::pair oldest(1U, 3U);
    constexpr std::pair withMonitors(1U, 5U);
    const auto spoken = version == nullptr
                            ? std::pair(0U, 0U)
                            : std::pair(version->major_version, version->minor_version);
    if (spoken < oldest) {
        return;
    }
    hasRandr_ = true;
    listsMonitors_ = spoken >= withMonitors;
    selectRandrEvents(XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE);
    constexpr std::string_view edid = "EDID";
    const auto atom = reply<xcb_intern_atom_reply_t>(
        xcb_intern_atom(connection_, 0, edid.size(), edid.data()).sequence);
    if (atom != nullptr) {
        edidAtom_ = atom->atom;
    }
}

void Connection::selectRandrEvents(std::uint16_t events) {
    // Xorg (21.1) takes no notice of a selection by whoever has made one already.
    constexpr std::uint16_t none = 0;
    xcb_randr_select_input(connection_, root(), none);
    xcb_randr_select_input(connection_, root(), events);
}

void* Connection::awaitReply(unsigned int sequence, xcb_generic_error_t** error) {
    if (isLost()) {
        return nullptr;
    }
    const auto deadline = std::chrono::steady_clock::now() + timeout_;
    xcb_flush(connection_);
    void* reply = nullptr;
    xcb_generic_error_t* refusal = nullptr;
    while (xcb_poll_for_reply(connection_, sequence, &reply, &refusal) == 0) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            giveUp();
            return nullptr;
        }
        pollfd socket{xcb_get_file_descriptor(connection_), POLLIN, 0};
        ::poll(&socket, 1, static_cast<int>(left.count()));
    }
    if (error != nullptr) {
        *error = refusal;
    } else {
        XcbFree()(refusal);
    }
    return reply;
}

void Connection::giveUp() {
    hasTimedOut_ = true;
    // The server may have been given to us alone, or be about to: it has to learn that we have
    // left as soon as it reads on, however long this object is kept.
    ::shutdown(xcb_get_file_descriptor(connection_), SHUT_RDWR);
}

bool Connection::roundTrip() {
    return reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(connection_).sequence) != nullptr;
}

bool Connection::succeeded(xcb_void_cookie_t request) {
    // Such a request is known to have succeeded only when a later one has been answered.
    if (!roundTrip()) {
        return false;
    }
    xcb_generic_error_t* refusal = nullptr;
    awaitReply(request.sequence, &refusal);
    return !isLost() && XcbReply<xcb_generic_error_t>(refusal) == nullptr;
}

XcbReply<xcb_generic_event_t> Connection::nextEvent() {
    drainEvents();
    if (events_.empty()) {
        return nullptr;
    }
    XcbReply<xcb_generic_event_t> event = std::move(events_.front());
    events_.pop_front();
    return event;
}

bool Connection::discardEvents() {
    drainEvents();
    const bool hasNews = std::any_of(events_.begin(), events_.end(),
                                     [this](const auto& event) { return isRandrEvent(*event); });
    events_.clear();
    return hasNews;
}

bool Connection::isRandrEvent(const xcb_generic_event_t& event) const {
    const int number = eventNumber(event) - firstRandrEvent_;
    return hasRandr_ && (number == XCB_RANDR_SCREEN_CHANGE_NOTIFY || number == XCB_RANDR_NOTIFY);
}

bool Connection::hasProbedLately() const {
    // A wake all asks for one display after the other.
    constexpr std::chrono::seconds aMoment{1};
    return probedAt_.has_value() && std::chrono::steady_clock::now() - *probedAt_ < aMoment;
}

void Connection::noteProbed(std::uint32_t layoutTimestamp, std::uint32_t configTimestamp) {
    probedLayout_ = {layoutTimestamp, configTimestamp};
    probedAt_ = std::chrono::steady_clock::now();
}

Connection::Millimetres Connection::millimetres() {
    drainEvents();
    return millimetres_;
}

void Connection::drainEvents() {
    while (!isLost()) {
        XcbReply<xcb_generic_event_t> event(xcb_poll_for_event(connection_));
        if (event == nullptr) {
            return;
        }
        noteScreenChange(*event);
        events_.push_back(std::move(event));
    }
}

void Connection::noteScreenChange(const xcb_generic_event_t& event) {
    if (!hasRandr_ || eventNumber(event) != firstRandrEvent_ + XCB_RANDR_SCREEN_CHANGE_NOTIFY) {
        return;
    }
    xcb_randr_screen_change_notify_event_t change{};
    std::memcpy(&change, &event, sizeof change);
    constexpr int sideways = XCB_RANDR_ROTATION_ROTATE_90 | XCB_RANDR_ROTATION_ROTATE_270;
    // The size in the event is that of the screen before it was turned.
    millimetres_ = (change.rotation & sideways) != 0 ? Millimetres{change.mheight, change.mwidth}
                                                     : Millimetres{change.mwidth, change.mheight};
}

}  // namespace tavrel::x11
