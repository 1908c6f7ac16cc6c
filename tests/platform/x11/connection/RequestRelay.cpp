#include "tests/platform/x11/connection/RequestRelay.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace tavrel {

namespace {

constexpr int pollMilliseconds = 20;
constexpr std::size_t bufferSize = 65536;

/// Finds the requests in what a client sends, however it arrives.
class RequestStream {
public:
    /// Takes in the next bytes and returns which requests begin in them.
    std::vector<RequestRelay::Request> take(std::string_view bytes) {
        pending_.append(bytes);
        std::vector<RequestRelay::Request> found;
        for (std::size_t length = nextLength(); length != 0; length = nextLength()) {
            if (isSetUp_) {
                found.push_back({.opcode = byte(0), .minor = byte(1)});
            }
            isSetUp_ = true;
            pending_.erase(0, length);
        }
        return found;
    }

private:
    std::uint8_t byte(std::size_t at) const { return static_cast<std::uint8_t>(pending_[at]); }
    std::size_t word(std::size_t at) const { return byte(at) + (std::size_t{byte(at + 1)} << 8U); }
    static std::size_t padded(std::size_t length) { return (length + 3) / 4 * 4; }

    /// Of what stands first; 0 while it hasn't arrived whole.
    std::size_t nextLength() const {
        constexpr std::size_t setupHeader = 12;
        constexpr std::size_t requestHeader = 4;
        if (pending_.size() < (isSetUp_ ? requestHeader : setupHeader)) {
            return 0;
        }
        const std::size_t length =
            isSetUp_ ? 4 * word(2) : setupHeader + padded(word(6)) + padded(word(8));
        return pending_.size() < length ? 0 : length;
    }

    bool isSetUp_ = false;
    std::string pending_;
};

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

RequestRelay::RequestRelay(const std::string& server, Listener listener)
    : serverPath_("/tmp/.X11-unix/X" + server.substr(1)),
      listener_(std::move(listener)),
      acceptor_([this] { accept(); }) {}

RequestRelay::~RequestRelay() {
    stop_ = true;
    acceptor_.join();
    for (std::thread& thread : relays_) {
        thread.join();
    }
}

void RequestRelay::accept() {
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

void RequestRelay::relay(const FileDescriptor& client) const {
    const FileDescriptor server = connectTo(serverPath_);
    RequestStream requests;
    std::array<char, bufferSize> buffer{};
    std::array<pollfd, 2> sides{{{client.number(), POLLIN, 0}, {server.number(), POLLIN, 0}}};
    while (server.isOpen() && !stop_) {
        ::poll(sides.data(), sides.size(), pollMilliseconds);
        if (sides[0].revents != 0) {
            const ssize_t count = ::read(client.number(), buffer.data(), buffer.size());
            const std::string_view bytes(buffer.data(), count > 0 ? std::size_t(count) : 0);
            for (const Request& request : requests.take(bytes)) {
                listener_(request);
            }
            if (bytes.empty() || !sendAll(server.number(), bytes)) {
                return;
            }
        }
        if (sides[1].revents != 0) {
            const ssize_t count = ::read(server.number(), buffer.data(), buffer.size());
            if (count <= 0 || !sendAll(client.number(), {buffer.data(), std::size_t(count)})) {
                return;
            }
        }
    }
}

}  // namespace tavrel
