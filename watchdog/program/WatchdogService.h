#pragma once

#include <chrono>
#include <functional>

#include "platform/DisplaySwitch.h"
#include "watchdog/protocol/MessageChannel.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// The guard's side of the conversation: switches displays for the application, one at a
/// time, and undoes that when the application is gone without a goodbye.
class WatchdogService {
public:
    /// How often it tries to switch on what does not come on at once, and what it waits in
    /// between. A server that is being rearranged by others gives in within that time; for
    /// one that does not, nobody waits any longer.
    static constexpr int attempts = 9;
    static constexpr std::chrono::milliseconds retryInterval{250};

    using Pause = std::function<void(std::chrono::milliseconds)>;

    /// Both must outlive it. `pause` returns after the time it is given.
    WatchdogService(DisplaySwitch& lifecycle, MessageChannel& application, Pause pause);

    /// Serves the application to its end, does what is left to do, and returns.
    ///
    /// What is not a message ends the conversation, but not the duty: the application may
    /// live and start another guard, so the displays stay as they are until it is gone.
    void run();

private:
    enum class Ending { goodbye, gone };

    Ending converse();
    /// Returns whether an application may say that.
    bool heed(const Message& message);
    ServerStatus carryOut(DisplayID display, bool enabled);
    void switchAllOn();

    DisplaySwitch& lifecycle_;
    MessageChannel& application_;
    Pause pause_;
    SwitchedOff switchedOff_;
};

}  // namespace tavrel::watchdog
