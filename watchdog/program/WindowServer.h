#pragma once

#include <memory>

#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// Switches the displays of the window server that the application uses too. Owns all it
/// needs. To be called once, before there is a second thread.
std::shared_ptr<DisplaySwitch> makeDisplaySwitch();

}  // namespace tavrel::watchdog
