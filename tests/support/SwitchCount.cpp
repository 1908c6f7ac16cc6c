#include "tests/support/SwitchCount.h"

namespace tavrel::support {

int SwitchCount::switchedOn() {
    takeAll();
    return switchedOn_;
}

int SwitchCount::switchedOff() {
    takeAll();
    return switchedOff_;
}

void SwitchCount::takeAll() {
    switches_.roundTrip();
    while (const auto isOn = switches_.next()) {
        ++(*isOn ? switchedOn_ : switchedOff_);
    }
}

}  // namespace tavrel::support
