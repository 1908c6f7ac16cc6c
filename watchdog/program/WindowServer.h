#pragma once

#include <memory>

#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// The displays of the system that this guard runs on, with all they need. To be called
/// once, before there is a second thread.
std::shared_ptr<DisplaySwitch> makeDisplaySwitch();

}  // namespace tavrel::watchdog
