#pragma once

#include <xcb/randr.h>

#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::bench {

/// Switches one monitor off and on by as few requests as RandR allows: what the server itself
/// takes for it.
class BareSwitch {
public:
    /// The monitor is on now, as it is to be again later. Throws std::runtime_error when it is
    /// not.
    BareSwitch(const std::string& displayName, const std::string& output);

    /// Blocks until the server has done it. Throws std::runtime_error when it refuses.
    void set(bool on) const;

private:
    support::XConnection connection_;
    xcb_randr_output_t output_ = XCB_NONE;
    support::XcbReply<xcb_randr_get_crtc_info_reply_t> shown_;
    xcb_randr_crtc_t crtc_ = XCB_NONE;
};

}  // namespace tavrel::bench
