#pragma once

#include <algorithm>
#include <vector>

#include "platform/DisplayID.h"

namespace tavrel::watchdog {

/// The displays that this application has, or may have, switched off and not on again, in
/// the order in which they were switched off. Both the supervisor and the watchdog keep it.
class SwitchedOff {
public:
    void add(DisplayID display) {
        if (!contains(display)) {
            displays_.push_back(display);
        }
    }
    void remove(DisplayID display) { std::erase(displays_, display); }
    bool contains(DisplayID display) const {
        return std::find(displays_.begin(), displays_.end(), display) != displays_.end();
    }
    const std::vector<DisplayID>& displays() const { return displays_; }

private:
    std::vector<DisplayID> displays_;
};

}  // namespace tavrel::watchdog
