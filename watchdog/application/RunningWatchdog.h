#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "watchdog/protocol/MessageChannel.h"

namespace tavrel::watchdog {

/// A started watchdog, as the application holds it. No call waits for it without limit.
///
/// Destroying it closes the connection and waits a while for the watchdog to end by itself,
/// which, without a goodbye before, includes switching displays on.
class RunningWatchdog {
public:
    virtual ~RunningWatchdog() = default;

    /// Stays open, also when the watchdog has ended, until `dismiss`.
    virtual MessageChannel& link() = 0;
    /// Of the connection, to wait for it together with other things.
    virtual int descriptor() const = 0;

    /// Says goodbye and returns when the watchdog has ended: by itself, or killed because it
    /// has not done so within a while. Only the destructor may be called after it.
    virtual void dismiss() = 0;

    /// Ends the watchdog before it does anything more: it does not react to the lost
    /// connection.
    virtual void kill() = 0;
};

/// Starts a watchdog; null when the system cannot. It finds the `first` messages when it begins
/// to listen, even if nobody is left by then who could send them.
using StartWatchdog =
    std::function<std::unique_ptr<RunningWatchdog>(const std::vector<Message>& first)>;

}  // namespace tavrel::watchdog
