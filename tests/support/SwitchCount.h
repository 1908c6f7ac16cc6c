#pragma once

#include <xcb/randr.h>

#include <map>
#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// Counts how often anybody has switched a CRTC on since it was made, as the X server
/// tells it.
class SwitchCount {
public:
    explicit SwitchCount(const std::string& displayName);

    /// How many CRTCs have come on so far. To be asked when things have settled.
    int switchedOn();

private:
    void note(const xcb_randr_crtc_change_t& change);

    XConnection connection_;
    std::uint8_t firstEvent_ = 0;
    std::map<xcb_randr_crtc_t, bool> isOn_;
    int switchedOn_ = 0;
};

}  // namespace tavrel::support
