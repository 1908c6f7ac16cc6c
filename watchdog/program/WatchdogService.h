#pragma once

#include <chrono>
#include <functional>

#include "platform/DisplaySwitch.h"
#include "watchdog/protocol/MessageChannel.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// The watchdog's side of the conversation: switches displays for the application, one at a
/// time, and switches on what is off when the application is gone without a goodbye.
class WatchdogService {
public:
    /// How often it tries to switch a display on, and how long it waits in between. A server
    /// that is busy with another change accepts within that time.
    static constexpr int attempts = 9;
    static constexpr std::chrono::milliseconds retryInterval{250};

    using Pause = std::function<void(std::chrono::milliseconds)>;

    /// Both must outlive it. `pause` returns after the time it is given.
    WatchdogService(DisplaySwitch& displays, MessageChannel& application, Pause pause);

    /// Serves the application until its end, then switches on what it left off unless it
    /// said goodbye.
    ///
    /// What is not a message ends the conversation, but displays are not switched on before
    /// the application is gone: it may be running and start another watchdog.
    void run();

private:
    enum class Ending { goodbye, gone };

    Ending converse();
    /// Does what the message asks for; false when an application may not send such a one.
    bool handle(const Message& message);
    ServerStatus carryOut(DisplayID display, bool enabled);
    void switchAllOn();

    DisplaySwitch& displays_;
    MessageChannel& application_;
    Pause pause_;
    SwitchedOff switchedOff_;
};

}  // namespace tavrel::watchdog
