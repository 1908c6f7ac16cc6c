#include "tests/support/DisplayNumber.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

namespace {

/// A socket with a name that only one can have, and that goes with its process; empty if another
/// has the name.
FileDescriptor hold(int number) {
    FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    // One that begins with a zero is in no folder.
    const std::string name = "tavrel-tests-display-" + std::to_string(number);
    std::copy(name.begin(), name.end(), address.sun_path + 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    const bool isOurs =
        ::bind(socket.number(), reinterpret_cast<const sockaddr*>(&address), size) == 0;
    return isOurs ? std::move(socket) : FileDescriptor();
}

}  // namespace

DisplayNumber::DisplayNumber() {
    // Above those that servers look for by themselves, which begin at 0.
    constexpr int first = 100;
    constexpr int end = 1000;
    for (value_ = first; value_ < end; ++value_) {
        held_ = hold(value_);
        if (held_.isOpen()) {
            return;
        }
    }
    throw std::runtime_error("no number is left for an X server");
}

std::optional<int> readDisplayNumber(const FileDescriptor& pipe) {
    std::string text;
    while (text.empty() || text.back() != '\n') {
        pollfd ready{pipe.number(), POLLIN, 0};
        char character = 0;
        if (::poll(&ready, 1, static_cast<int>(defaultTimeout.count())) <= 0 ||
            ::read(pipe.number(), &character, 1) != 1) {
            return std::nullopt;
        }
        text.push_back(character);
    }
    return std::isdigit(static_cast<unsigned char>(text.front())) != 0
               ? std::optional(std::stoi(text))
               : std::nullopt;
}

}  // namespace tavrel::support
