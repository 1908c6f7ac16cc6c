#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "platform/DisplaySwitch.h"
#include "watchdog/application/CrashLoopDetector.h"
#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// What a keeper needs besides displays.
struct SupervisorSetup {
    StartWatchdog startWatchdog;
    /// A monotonic clock; its zero is of no matter.
    std::function<std::chrono::nanoseconds()> now = [] {
        return std::chrono::steady_clock::now().time_since_epoch();
    };
    /// How long a guard may keep a request waiting before it counts as dead. Above what the
    /// slowest server is given.
    std::chrono::milliseconds patience{30'000};
};

/// The application's side of the conversation: has displays switched by a guard, sees to it
/// that there is one, and does it itself when guards cannot live here.
///
/// One change at a time: to be used by one thread at a time.
class WatchdogSupervisor {
public:
    /// Starts a guard. `inner` switches in this process and must outlive it.
    WatchdogSupervisor(DisplaySwitch& inner, SupervisorSetup surroundings);

    /// As in `DisplaySwitch`. When the guard dies over it:
    /// - a request to switch on is handed to the next guard: repeating it does no harm;
    /// - a request to switch off is taken back by switching on, and answers 1004. What it
    ///   has done is unknown, and what killed one guard might kill the next and, in the
    ///   end, this process, with nobody left to bring the display back.
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled);

    /// Tells the guard that the application ends in good order, and waits for its end.
    /// Later changes are made in this process. Only the first call does anything.
    void goodbye();

    /// Looks after the guard between requests: replaces it if it has died. To be called
    /// whenever `descriptor` is readable; never waits for the guard.
    void attend();

    /// The connection; -1 when changes are made in this process.
    int descriptor() const { return guard_ ? guard_->link().descriptor() : -1; }

private:
    ServerStatus switchOn(DisplayID display);
    ServerStatus switchOff(DisplayID display);
    /// The guard's answer; nothing when it has died over it.
    std::optional<ServerStatus> ask(DisplayID display, bool enabled);
    /// The guard's next message after the one that says it is ready.
    Received receive(std::chrono::milliseconds patience);
    void replaceGuard();
    void startWatchdog();

    DisplaySwitch& inner_;
    SupervisorSetup surroundings_;
    /// Null when changes are made in this process.
    std::unique_ptr<RunningWatchdog> guard_;
    bool guardIsReady_ = false;
    SwitchedOff switchedOff_;
    CrashLoopDetector deaths_;
    std::uint32_t lastId_ = 0;
};

}  // namespace tavrel::watchdog
