#pragma once

#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "platform/posix/FileDescriptor.h"

namespace tavrel {

/// A listening socket where clients look for an X server.
class LoopbackListener {
public:
    /// Throws std::system_error.
    LoopbackListener() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        if (::bind(socket_.number(), generic, size) != 0 || ::listen(socket_.number(), 16) != 0 ||
            ::getsockname(socket_.number(), generic, &size) != 0) {
            throw std::system_error(errno, std::generic_category(), "listening");
        }
        constexpr int firstDisplaysPort = 6000;
        displayName_ = "127.0.0.1:" + std::to_string(ntohs(address.sin_port) - firstDisplaysPort);
    }

    int number() const { return socket_.number(); }
    /// What a client is to take for its DISPLAY.
    const std::string& displayName() const { return displayName_; }

private:
    FileDescriptor socket_;
    std::string displayName_;
};

}  // namespace tavrel
