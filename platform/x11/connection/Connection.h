#pragma once

#include <xcb/xcb.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/ServerTimeout.h"

namespace tavrel {

/// Which X server, and how long to wait for its answers.
struct X11ServerOptions {
    /// As in the DISPLAY variable, which is used when this is std::nullopt.
    std::optional<std::string> displayName = std::nullopt;
    /// How long the server may take over each answer before the connection is given up.
    std::chrono::milliseconds timeout = serverTimeout;
};

namespace x11 {

/// Frees what xcb hands out with malloc.
struct XcbFree {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): xcb's contract.
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, an event or an error, whichever xcb gave us.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

/// All of a reply to a request: it is this long, and a multiple of four bytes more, and xcb has
/// read them all.
inline std::span<const std::uint8_t> bytesOf(const xcb_generic_reply_t& reply) {
    constexpr std::size_t shortest = 32;
    constexpr std::size_t unit = 4;
    return {reinterpret_cast<const std::uint8_t*>(&reply), shortest + unit * reply.length};
}

/// One connection to an X server.
///
/// To be used by one thread at a time. Once connected, nothing here blocks for longer than the
/// options' timeout: when the server has gone, or stays silent for longer than that, the
/// connection is lost for good. One that is given up is shut down at once, so that a server that
/// was only slow doesn't stay grabbed by it. Nothing here ends the process.
class Connection {
public:
    /// Blocks until the server has answered. Null when it cannot be reached; lost already when
    /// it answered at first and then stayed silent.
    static std::unique_ptr<Connection> connect(const X11ServerOptions& options);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    /// The root window of the screen the display name selects.
    xcb_window_t root() const { return roots_[defaultScreen_]; }
    const std::vector<xcb_window_t>& roots() const { return roots_; }
    /// Whether the server has RandR 1.3 or later.
    bool hasRandr() const { return hasRandr_; }
    /// Whether it has RandR 1.5 or later, which lists monitors.
    bool listsMonitors() const { return listsMonitors_; }
    /// Has the server send these of RandR's events, by their bits there, and no others.
    /// REQUIRES: the server has RandR.
    void selectRandrEvents(std::uint16_t events);
    /// Whether this is one of RandR's events, which come only when selected.
    bool isRandrEvent(const xcb_generic_event_t& event) const;
    /// The name of the output property that holds the EDID.
    xcb_atom_t edidAtom() const { return edidAtom_; }

    /// Whether the connection is known to be lost; `drainEvents` finds out.
    bool isLost() const { return hasTimedOut_ || xcb_connection_has_error(connection_) != 0; }

    /// Whether it was lost because the server stayed silent; it may be there all the same.
    bool hasTimedOut() const { return hasTimedOut_; }

    /// Sends all requests made so far and blocks until the one with this sequence number is
    /// answered. Null when the server answered with an error or the connection is lost.
    template <typename Reply>
    XcbReply<Reply> reply(unsigned int sequence) {
        return XcbReply<Reply>(static_cast<Reply*>(awaitReply(sequence, nullptr)));
    }

    /// Blocks until the server has carried out all requests made so far. Returns false when
    /// the connection is lost.
    bool roundTrip();

    /// Returns whether the server carried out a request that has no reply and was sent
    /// checked. Takes a round trip.
    bool succeeded(xcb_void_cookie_t request);

    /// Reads all events that have arrived, and notices when the connection has ended. Never
    /// blocks.
    void drainEvents();

    /// Returns the next event that has arrived, and null when there is none. Never blocks.
    XcbReply<xcb_generic_event_t> nextEvent();
    /// Whether an event has been read that `nextEvent` has not returned yet.
    bool hasEvents() const { return !events_.empty(); }
    /// Drops all events that have arrived, and returns whether one was RandR's.
    bool discardEvents();

    /// Whether the layout with these timestamps is the one for which the server was last made to
    /// look for monitors.
    bool hasProbed(std::uint32_t layoutTimestamp, std::uint32_t configTimestamp) const {
        return probedLayout_ == std::pair(layoutTimestamp, configTimestamp);
    }
    /// Whether it was made to look a moment ago.
    bool hasProbedLately() const;
    void noteProbed(std::uint32_t layoutTimestamp, std::uint32_t configTimestamp);

    /// The physical size the server claims for the screen.
    struct Millimetres {
        int width = 0;
        int height = 0;
    };
    /// Drains events, since only they tell of a new size.
    Millimetres millimetres();

private:
    Connection(xcb_connection_t* connection, std::chrono::milliseconds timeout, int screen);
    void negotiateRandr();
    void noteScreenChange(const xcb_generic_event_t& event);
    void* awaitReply(unsigned int sequence, xcb_generic_error_t** error);
    void giveUp();

    xcb_connection_t* connection_;
    std::chrono::milliseconds timeout_;
    std::vector<xcb_window_t> roots_;
    std::size_t defaultScreen_ = 0;
    bool hasRandr_ = false;
    bool listsMonitors_ = false;
    bool hasTimedOut_ = false;
    std::uint8_t firstRandrEvent_ = 0;
    xcb_atom_t edidAtom_ = XCB_ATOM_NONE;
    std::deque<XcbReply<xcb_generic_event_t>> events_;
    std::pair<std::uint32_t, std::uint32_t> probedLayout_;
    std::optional<std::chrono::steady_clock::time_point> probedAt_;
    Millimetres millimetres_;
};

/// The number of the event's kind, without the mark that another client sent it.
constexpr int eventNumber(const xcb_generic_event_t& event) {
    constexpr std::uint8_t sentByClient = 0x80;
    return event.response_type & ~sentByClient;
}

}  // namespace x11
}  // namespace tavrel
