#pragma once

#include <memory>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// The window server that the application uses too. Each owns all it needs.
struct WindowServer {
    std::shared_ptr<DisplaySwitch> displaySwitch;
    std::shared_ptr<DisplayQueries> queries;
};

/// To be called once, before there is a second thread.
WindowServer makeWindowServer();

}  // namespace tavrel::watchdog
