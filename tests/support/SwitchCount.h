#pragma once

#include <xcb/randr.h>

#include <map>
#include <string>

#include "tests/support/XConnection.h"

namespace tavrel::support {

/// Counts how often a CRTC has been switched on, by any program, since this was created.
class SwitchCount {
public:
    explicit SwitchCount(const std::string& displayName);

    /// How many have been switched on so far. To be called when the layout has settled.
    int switchedOn();

private:
    void note(const xcb_randr_crtc_change_t& change);

    XConnection connection_;
    std::uint8_t firstEvent_ = 0;
    std::map<xcb_randr_crtc_t, bool> isOn_;
    int switchedOn_ = 0;
};

}  // namespace tavrel::support
