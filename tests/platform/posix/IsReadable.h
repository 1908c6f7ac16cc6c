#pragma once

#include <poll.h>

namespace tavrel {

/// Whether a read from `descriptor` would find something now.
inline bool isReadable(int descriptor) {
    pollfd each{descriptor, POLLIN, 0};
    return ::poll(&each, 1, 0) == 1 && each.revents == POLLIN;
}

}  // namespace tavrel
