#pragma once

#include <memory>
#include <string_view>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"

namespace tavrel::watchdog {

/// The window server that the application uses too. Each owns all it needs.
struct WindowServer {
    std::shared_ptr<DisplaySwitch> displaySwitch;
    std::shared_ptr<DisplayQueries> queries;
};

/// `name` is what the application calls the one it has chosen; without one it is chosen here, by
/// the same rule. To be called once, before there is a second thread.
WindowServer makeWindowServer(std::string_view name);

}  // namespace tavrel::watchdog
