#include "tests/support/SwitchCount.h"

namespace tavrel::support {

int SwitchCount::switchedOn() {
    switches_.roundTrip();
    while (const auto isOn = switches_.next()) {
        switchedOn_ += *isOn ? 1 : 0;
    }
    return switchedOn_;
}

}  // namespace tavrel::support
