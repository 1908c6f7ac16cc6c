#include "platform/plasma/connection/WaylandSocket.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace tavrel::plasma {

namespace {

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

}  // namespace

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

}  // namespace tavrel::plasma
