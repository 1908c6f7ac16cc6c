#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <string>

namespace tavrel::support {

/// Frees what xcb hands out with malloc.
struct XcbFree {
    // NOLINTNEXTLINE(cppcoreguidelines-no-malloc): xcb's contract.
    void operator()(void* reply) const { std::free(reply); }
};
template <typename Reply>
using XcbReply = std::unique_ptr<Reply, XcbFree>;

/// A test's own connection to an X server.
class XConnection {
public:
    /// Throws std::runtime_error when the server does not answer.
    explicit XConnection(const std::string& displayName);
    ~XConnection();
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const;
    const xcb_screen_t& screen() const { return *screen_; }

    /// Returns once the server has carried out all that was asked of it so far.
    void roundTrip() const;

private:
    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
};

}  // namespace tavrel::support
