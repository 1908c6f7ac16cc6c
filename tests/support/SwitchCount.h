#pragma once

#include <string>

#include "tests/support/CrtcSwitches.h"

namespace tavrel::support {

/// Counts how often CRTCs have been switched on and off, by any program, since this was created.
class SwitchCount {
public:
    explicit SwitchCount(const std::string& displayName) : switches_(displayName) {}

    /// How many have been switched on so far. To be called when the layout has settled.
    int switchedOn();
    /// How many have been switched off so far. The same.
    int switchedOff();

private:
    void takeAll();

    CrtcSwitches switches_;
    int switchedOn_ = 0;
    int switchedOff_ = 0;
};

}  // namespace tavrel::support
