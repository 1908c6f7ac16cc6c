#include "tests/support/SilentSocket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

namespace tavrel::support {

SilentSocket::SilentSocket(const std::filesystem::path& path)
    : listening_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = path.string();
    // The text needs its final zero.
    if (name.size() >= sizeof address.sun_path) {
        throw std::system_error(ENAMETOOLONG, std::generic_category(), name);
    }
    std::copy(name.begin(), name.end(), std::begin(address.sun_path));
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast): the socket interface's way.
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    constexpr int waitingClients = 8;
    if (::bind(listening_.number(), generic, sizeof address) != 0 ||
        ::listen(listening_.number(), waitingClients) != 0) {
        throw std::system_error(errno, std::generic_category(), name);
    }
}

void SilentSocket::awaitClient() {
    client_ = FileDescriptor(::accept4(listening_.number(), nullptr, nullptr, SOCK_CLOEXEC));
}

}  // namespace tavrel::support
