#pragma once

#include <xcb/randr.h>

#include <map>
#include <string>

#include "tests/bench/Clock.h"
#include "tests/support/XConnection.h"

namespace tavrel::bench {

/// Sees when an X server switches a monitor off or on, whoever asked it to.
class LayoutWatch {
public:
    explicit LayoutWatch(const std::string& displayName);

    /// What has happened until now does not count.
    void forget();

    /// When the server says that one has gone off, or come on. Blocks until it does; throws
    /// std::runtime_error when it never does.
    Time awaitSwitch(bool on);

private:
    /// Whether a CRTC has just changed to that.
    bool isSwitch(const xcb_generic_event_t& event, bool on);

    support::XConnection connection_;
    std::uint8_t firstEvent_ = 0;
    std::map<xcb_randr_crtc_t, bool> isOn_;
};

}  // namespace tavrel::bench
