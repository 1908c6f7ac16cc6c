#include "tests/platform/x11/connection/ServerRelay.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cstddef>
#include <utility>

namespace tavrel {

namespace {

constexpr int pollMilliseconds = 20;
constexpr std::size_t bufferSize = 65536;

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

ServerRelay::ServerRelay(const std::string& server, Beginning beginning)
    : serverPath_("/tmp/.X11-unix/X" + server.substr(1)),
      beginning_(std::move(beginning)),
      acceptor_([this] { accept(); }) {}

ServerRelay::~ServerRelay() {
    stop_ = true;
    acceptor_.join();
    for (std::thread& thread : relays_) {
        thread.join();
    }
}

void ServerRelay::accept() {
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

void ServerRelay::relay(const FileDescriptor& client) {
    const FileDescriptor server = connectTo(serverPath_);
    const std::unique_ptr<Conversation> conversation = beginning_();
    const Send toServer = [&](std::string_view bytes) { return sendAll(server.number(), bytes); };
    const Send toClient = [&](std::string_view bytes) { return sendAll(client.number(), bytes); };
    std::array<char, bufferSize> buffer{};
    std::array<pollfd, 2> sides{{{client.number(), POLLIN, 0}, {server.number(), POLLIN, 0}}};
    const auto readFrom = [&](const FileDescriptor& side) {
        const ssize_t count = ::read(side.number(), buffer.data(), buffer.size());
        return std::string_view(buffer.data(), count > 0 ? std::size_t(count) : 0);
    };
    while (server.isOpen() && !stop_) {
        ::poll(sides.data(), sides.size(), pollMilliseconds);
        if (sides[0].revents != 0) {
            const std::string_view bytes = readFrom(client);
            if (bytes.empty() || !conversation->fromClient(bytes, toServer)) {
                return;
            }
        }
        if (sides[1].revents != 0) {
            const std::string_view bytes = readFrom(server);
            if (bytes.empty() || !conversation->fromServer(bytes, toClient)) {
                return;
            }
        }
    }
}

}  // namespace tavrel
