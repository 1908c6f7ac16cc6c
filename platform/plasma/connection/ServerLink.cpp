#include "platform/plasma/connection/ServerLink.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <string>
#include <utility>

#include "platform/posix/FileDescriptor.h"

namespace tavrel::plasma {

namespace {

constexpr std::chrono::seconds pauseBetweenAttempts{1};

/// A connection to a Wayland server's socket, and whether that was possible.
struct WaylandSocket {
    FileDescriptor descriptor;
    /// Whether a server is there that takes no more connections now: it is silent, not gone.
    bool isCrowded = false;
};

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string() : std::string(value);
}

/// Empty where there is none.
std::string pathOf(const std::string& name) {
    if (name.empty() || name.front() == '/') {
        return name;
    }
    const std::string folder = variable("XDG_RUNTIME_DIR");
    return folder.empty() ? folder : folder + '/' + name;
}

/// Connects to the socket of that name, in the user's runtime folder unless it is a path; to
/// that of WAYLAND_DISPLAY when this is std::nullopt, and to none where that says nothing. The
/// descriptor is not inherited by started programs. Never blocks.
///
/// libwayland's own way blocks while a server that hangs has too many waiting, and takes what
/// WAYLAND_SOCKET names, which is the toolkit's.
WaylandSocket connectSocket(const std::optional<std::string>& name) {
    const std::string path = pathOf(name.has_value() ? *name : variable("WAYLAND_DISPLAY"));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return {};
    }
    std::copy(path.begin(), path.end(), std::begin(address.sun_path));

    FileDescriptor descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!descriptor.isOpen()) {
        return {};
    }
    if (::connect(descriptor.number(), reinterpret_cast<const sockaddr*>(&address),
                  sizeof address) == 0) {
        return {.descriptor = std::move(descriptor)};
    }
    return {.descriptor = {}, .isCrowded = errno == EAGAIN};
}

}  // namespace

ServerLink::ServerLink(PlasmaServerOptions options, int cancel)
    : options_(std::move(options)), cancel_(cancel) {}

Session* ServerLink::session() {
    if (session_ != nullptr && !session_->connection->isLost()) {
        const bool isUpToDate = catchUp();
        // Whoever has waited for a silent server for so long is not to wait as long again.
        if (isUpToDate || !isKnownToBeGone_) {
            return session_.get();
        }
    }
    session_.reset();
    const auto now = std::chrono::steady_clock::now();
    if (now >= nextAttempt_) {
        connect();
        nextAttempt_ = session_ == nullptr ? now + pauseBetweenAttempts : now;
    }
    return session_.get();
}

bool ServerLink::catchUp() {
    Connection& connection = *session_->connection;
    // What has just been announced is described a round trip later.
    const bool isAnswered =
        connection.roundTrip() && (session_->outputs->isWhole() || connection.roundTrip());
    if (isAnswered && session_->outputs->canConfigure()) {
        return true;
    }
    isKnownToBeGone_ = !connection.hasTimedOut();
    session_.reset();
    return false;
}

void ServerLink::connect() {
    WaylandSocket socket = connectSocket(options_.displayName);
    std::unique_ptr<Connection> connection;
    if (socket.descriptor.isOpen()) {
        connection = Connection::open(std::move(socket.descriptor), options_.timeout, cancel_);
    }
    if (connection == nullptr) {
        isKnownToBeGone_ = !socket.isCrowded;
        return;
    }
    session_ = std::make_unique<Session>(std::move(connection));
    // The first brings the globals; what they describe comes with the second.
    if (!session_->connection->roundTrip()) {
        isKnownToBeGone_ = !session_->connection->hasTimedOut();
        session_.reset();
    } else if (catchUp()) {
        isKnownToBeGone_ = false;
    }
}

}  // namespace tavrel::plasma
