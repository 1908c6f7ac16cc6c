#include "watchdog/protocol/MessageSocket.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <span>

namespace tavrel::watchdog {
namespace {

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL | MSG_DONTWAIT;
#else
constexpr int sendFlags = MSG_DONTWAIT;
#endif

/// For systems on which SIGPIPE is turned off for a socket, not for a call.
void silencePipeSignal([[maybe_unused]] int socket) {
#ifdef SO_NOSIGPIPE
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_NOSIGPIPE, &yes, sizeof yes);
#endif
}

int millisecondsUntil(std::chrono::steady_clock::time_point deadline) {
    using std::chrono::ceil;
    using std::chrono::milliseconds;
    const auto left = ceil<milliseconds>(deadline - std::chrono::steady_clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, std::numeric_limits<int>::max()));
}

}  // namespace

MessageSocket::MessageSocket(FileDescriptor socket) : socket_(std::move(socket)) {
    silencePipeSignal(socket_.number());
}

bool MessageSocket::send(const Message& message) {
    const MessageBytes bytes = encode(message);
    std::span<const std::uint8_t> rest = bytes;
    while (!rest.empty()) {
        const ssize_t sent = ::send(socket_.number(), rest.data(), rest.size(), sendFlags);
        if (sent < 0 && errno != EINTR) {
            return false;
        }
        rest = rest.subspan(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    return true;
}

Received MessageSocket::receive(std::chrono::milliseconds timeout) {
    const Deadline deadline = std::chrono::steady_clock::now() + timeout;
    std::array<std::uint8_t, messageSize> bytes{};
    for (;;) {
        if (!becomesReadable(deadline)) {
            return NoMessage::timedOut;
        }
        const ssize_t size = recv(socket_.number(), bytes.data(), reader_.missing(), 0);
        if (size < 0 && errno == EINTR) {
            continue;
        }
        // Its end shows as an error when it did not read all we sent.
        if (size <= 0) {
            return NoMessage::gone;
        }
        const auto result = reader_.add(std::span(bytes).first(static_cast<std::size_t>(size)));
        if (!result) {
            continue;
        }
        const auto* message = std::get_if<Message>(&*result);
        return message != nullptr ? Received(*message) : Received(NoMessage::malformed);
    }
}

bool MessageSocket::becomesReadable(Deadline deadline) const {
    pollfd waiting{.fd = socket_.number(), .events = POLLIN, .revents = 0};
    while (poll(&waiting, 1, millisecondsUntil(deadline)) <= 0) {
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
    }
    return true;
}

void MessageSocket::hangUp() {
    shutdown(socket_.number(), SHUT_WR);
    std::array<std::uint8_t, 1024> ignored{};
    ssize_t size = 1;
    while (size > 0 || (size < 0 && errno == EINTR)) {
        size = recv(socket_.number(), ignored.data(), ignored.size(), 0);
    }
}

std::optional<std::pair<FileDescriptor, FileDescriptor>> makeSocketPair() {
    int ends[2];
#ifdef SOCK_CLOEXEC
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
        return std::nullopt;
    }
#else
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
        return std::nullopt;
    }
    for (const int end : ends) {
        fcntl(end, F_SETFD, FD_CLOEXEC);
    }
#endif
    return std::pair(FileDescriptor(ends[0]), FileDescriptor(ends[1]));
}

}  // namespace tavrel::watchdog
