#include "platform/plasma/connection/Connection.h"

#include <fcntl.h>
#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tavrel::plasma {

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

void noteDone(void* isDone, wl_callback* /*callback*/, std::uint32_t /*data*/) {
    *static_cast<bool*>(isDone) = true;
}

constexpr wl_callback_listener doneListener{.done = noteDone};

int millisecondsUntil(steady_clock::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - steady_clock::now());
    return static_cast<int>(std::max(left, milliseconds::zero()).count());
}

}  // namespace

std::unique_ptr<Connection> Connection::open(FileDescriptor socket, milliseconds timeout,
                                             int cancel) {
    // libwayland takes over the descriptor, also when it fails.
    const int descriptor = ::fcntl(socket.number(), F_DUPFD_CLOEXEC, 0);
    wl_display* display = descriptor < 0 ? nullptr : wl_display_connect_to_fd(descriptor);
    return std::unique_ptr<Connection>(
        display == nullptr ? nullptr : new Connection(display, timeout, cancel));
}

Connection::~Connection() {
    wl_display_disconnect(display_);
}

bool Connection::roundTrip() {
    bool isDone = false;
    wl_callback* callback = wl_display_sync(display_);
    if (callback == nullptr) {
        isLost_ = true;
        return false;
    }
    wl_callback_add_listener(callback, &doneListener, &isDone);
    const bool isAnswered = await([&] { return isDone; });
    wl_callback_destroy(callback);
    return isAnswered;
}

bool Connection::await(const std::function<bool()>& isDone) {
    const Deadline deadline = steady_clock::now() + timeout_;
    while (passOn()) {
        if (isDone()) {
            return true;
        }
        if (steady_clock::now() >= deadline) {
            isLost_ = hasTimedOut_ = true;
            return false;
        }
        read(deadline);
    }
    return false;
}

void Connection::passOnArrived() {
    // What there is now; not what goes on arriving meanwhile.
    if (passOn() && read(steady_clock::now())) {
        passOn();
    }
}

bool Connection::passOn() {
    isLost_ = isLost_ || wl_display_dispatch_pending(display_) < 0;
    if (!isLost_) {
        // Who takes what has arrived may have asked for more, and nobody may wait here again
        // until the answer comes.
        wl_display_flush(display_);
    }
    return !isLost_;
}

bool Connection::read(Deadline deadline) {
    if (wl_display_prepare_read(display_) != 0) {
        return true;
    }
    // Requests that the server does not take yet must not keep us from reading.
    const bool isSent = wl_display_flush(display_) >= 0 || errno != EAGAIN;
    const auto wanted = static_cast<short>(isSent ? POLLIN : POLLIN | POLLOUT);
    std::array<pollfd, 2> sources{{{descriptor(), wanted, 0}, {cancel_, POLLIN, 0}}};
    ::poll(sources.data(), sources.size(), millisecondsUntil(deadline));
    isLost_ = sources[1].revents != 0;
    if (isLost_ || (sources[0].revents & (POLLIN | POLLHUP | POLLERR)) == 0) {
        wl_display_cancel_read(display_);
        return false;
    }
    isLost_ = wl_display_read_events(display_) < 0;
    return !isLost_;
}

}  // namespace tavrel::plasma
