#pragma once

#include <cstdlib>
#include <memory>

namespace tavrel::x11 {

/// Frees what xcb hands out with malloc.
struct XcbFree {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): xcb's contract.
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply, an event or an error, whichever xcb gave us.
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

}  // namespace tavrel::x11
