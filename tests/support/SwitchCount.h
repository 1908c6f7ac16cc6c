#pragma once

#include <string>

#include "tests/support/CrtcSwitches.h"

namespace tavrel::support {

/// Counts how often a CRTC has been switched on, by any program, since this was created.
class SwitchCount {
public:
    explicit SwitchCount(const std::string& displayName) : switches_(displayName) {}

    /// How many have been switched on so far. To be called when the layout has settled.
    int switchedOn();

private:
    CrtcSwitches switches_;
    int switchedOn_ = 0;
};

}  // namespace tavrel::support
