#include "tests/bench/Traffic.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavrel::bench {

namespace {

constexpr int pollMilliseconds = 20;
constexpr std::size_t bufferSize = 65536;

/// A number in `bytes`, least significant byte first.
std::size_t number(std::string_view bytes, std::size_t at, std::size_t size) {
    std::size_t result = 0;
    for (std::size_t i = size; i > 0; --i) {
        result = result << 8U | static_cast<std::uint8_t>(bytes[at + i - 1]);
    }
    return result;
}

std::size_t padded(std::size_t length) {
    return (length + 3) / 4 * 4;
}

bool sendAll(int to, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

FileDescriptor connectTo(const std::string& path) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(std::data(address.sun_path), sizeof address.sun_path - 1);
    if (::connect(socket.number(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        socket.close();
    }
    return socket;
}

}  // namespace

TrafficCount TrafficCount::operator-(const TrafficCount& earlier) const {
    return {.requests = requests - earlier.requests,
            .bytesToServer = bytesToServer - earlier.bytesToServer,
            .bytesFromServer = bytesFromServer - earlier.bytesFromServer,
            .roundTrips = roundTrips - earlier.roundTrips};
}

TrafficCount& TrafficCount::operator+=(const TrafficCount& more) {
    requests += more.requests;
    bytesToServer += more.bytesToServer;
    bytesFromServer += more.bytesFromServer;
    roundTrips += more.roundTrips;
    return *this;
}

void ConversationCount::fromClient(std::string_view bytes) {
    count_.bytesToServer += static_cast<long>(bytes.size());
    toServer_.append(bytes);
    for (std::size_t length = nextRequest(); length != 0; length = nextRequest()) {
        count_.requests += clientHasSetUp_ ? 1 : 0;
        clientHasSetUp_ = true;
        isAsking_ = true;
        toServer_.erase(0, length);
    }
}

void ConversationCount::fromServer(std::string_view bytes) {
    constexpr char reply = 1;
    count_.bytesFromServer += static_cast<long>(bytes.size());
    toClient_.append(bytes);
    for (std::size_t length = nextMessage(); length != 0; length = nextMessage()) {
        if (serverHasSetUp_ && toClient_.front() == reply && isAsking_) {
            ++count_.roundTrips;
            isAsking_ = false;
        }
        serverHasSetUp_ = true;
        toClient_.erase(0, length);
    }
}

/// How long what stands first is; 0 while it has not arrived whole.
std::size_t ConversationCount::nextRequest() const {
    constexpr std::size_t setupHeader = 12;
    constexpr std::size_t requestHeader = 8;
    if (toServer_.size() < 4 || (!clientHasSetUp_ && toServer_.size() < setupHeader)) {
        return 0;
    }
    std::size_t length = 4 * number(toServer_, 2, 2);
    if (!clientHasSetUp_) {
        length = setupHeader + padded(number(toServer_, 6, 2)) + padded(number(toServer_, 8, 2));
    } else if (length == 0) {
        // A big one: its length stands behind.
        length = toServer_.size() < requestHeader ? 0 : 4 * number(toServer_, 4, 4);
    }
    return toServer_.size() < length ? 0 : length;
}

std::size_t ConversationCount::nextMessage() const {
    constexpr std::size_t setupHeader = 8;
    constexpr std::size_t messageHeader = 32;
    constexpr char reply = 1;
    constexpr char genericEvent = 35;
    if (toClient_.size() < (serverHasSetUp_ ? messageHeader : setupHeader)) {
        return 0;
    }
    std::size_t length = setupHeader + 4 * number(toClient_, 6, 2);
    if (serverHasSetUp_) {
        const bool isLonger =
            toClient_.front() == reply || (toClient_.front() & 0x7f) == genericEvent;
        length = messageHeader + (isLonger ? 4 * number(toClient_, 4, 4) : 0);
    }
    return toClient_.size() < length ? 0 : length;
}

Traffic::Traffic(const std::string& server)
    : serverPath_("/tmp/.X11-unix/X" + server.substr(1)), acceptor_([this] { accept(); }) {}

Traffic::~Traffic() {
    stop_ = true;
    acceptor_.join();
    for (std::thread& thread : relays_) {
        thread.join();
    }
}

TrafficCount Traffic::count() {
    const std::lock_guard lock(mutex_);
    return count_;
}

void Traffic::add(const TrafficCount& more) {
    const std::lock_guard lock(mutex_);
    count_ += more;
}

void Traffic::accept() {
    while (!stop_) {
        pollfd ready{socket_.number(), POLLIN, 0};
        if (::poll(&ready, 1, pollMilliseconds) == 1) {
            relays_.emplace_back(
                [this, client = FileDescriptor(::accept(socket_.number(), nullptr, nullptr))] {
                    relay(client);
                });
        }
    }
}

void Traffic::relay(const FileDescriptor& client) {
    const FileDescriptor server = connectTo(serverPath_);
    ConversationCount conversation;
    TrafficCount told;
    std::array<char, bufferSize> buffer{};
    std::array<pollfd, 2> sides{{{client.number(), POLLIN, 0}, {server.number(), POLLIN, 0}}};
    while (server.isOpen() && !stop_) {
        ::poll(sides.data(), sides.size(), pollMilliseconds);
        for (const std::size_t from : {0U, 1U}) {
            if (sides.at(from).revents == 0) {
                continue;
            }
            const ssize_t count = ::read(sides.at(from).fd, buffer.data(), buffer.size());
            const std::string_view bytes(buffer.data(), count > 0 ? std::size_t(count) : 0);
            if (bytes.empty() || !sendAll(sides.at(1 - from).fd, bytes)) {
                return;
            }
            from == 0 ? conversation.fromClient(bytes) : conversation.fromServer(bytes);
            add(conversation.count() - told);
            told = conversation.count();
        }
    }
}

}  // namespace tavrel::bench
