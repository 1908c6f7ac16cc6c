#pragma once

#include <functional>
#include <memory>

#include "watchdog/protocol/MessageSocket.h"

namespace tavrel::watchdog {

/// A guard that was started, as the application holds it.
///
/// Destroying it closes the connection and waits a while for the guard to end of its own
/// accord, which, without a goodbye before, includes switching displays on.
class RunningWatchdog {
public:
    virtual ~RunningWatchdog() = default;

    /// Stays open, whatever becomes of the guard.
    virtual MessageSocket& link() = 0;

    /// Ends the guard before it does anything more. It does not act on the lost connection.
    virtual void kill() = 0;
};

/// Starts a guard; null when the system cannot.
using StartWatchdog = std::function<std::unique_ptr<RunningWatchdog>()>;

}  // namespace tavrel::watchdog
