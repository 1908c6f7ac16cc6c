#pragma once

#include <functional>
#include <memory>

#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::watchdog {

/// A started watchdog, as the application holds it.
///
/// Destroying it closes the connection and waits a while for the watchdog to end by itself,
/// which, without a goodbye before, includes switching displays on.
class RunningWatchdog {
public:
    virtual ~RunningWatchdog() = default;

    /// Stays open also when the watchdog has ended.
    virtual MessageSocket& link() = 0;

    /// Ends the watchdog before it does anything more: it does not react to the lost
    /// connection.
    virtual void kill() = 0;
};

/// Starts a watchdog; null when the system cannot.
using StartWatchdog = std::function<std::unique_ptr<RunningWatchdog>()>;

}  // namespace tavrel::watchdog
