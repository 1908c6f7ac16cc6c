#include "tests/support/DisplayNumber.h"

#include <poll.h>
#include <unistd.h>

#include <cctype>
#include <string>

#include "tests/support/WaitUntil.h"

namespace tavrel::support {

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
