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

/// What a supervisor needs besides displays.
struct SupervisorSetup {
    StartWatchdog startWatchdog;
    /// A monotonic clock with any zero.
    std::function<std::chrono::nanoseconds()> now = [] {
        return std::chrono::steady_clock::now().time_since_epoch();
    };
    /// How long a watchdog may take to answer before it counts as dead. Longer than the
    /// slowest server is given.
    std::chrono::milliseconds answerTimeout{30'000};
};

/// The application's side of the conversation: has displays switched by a watchdog, sees to
/// it that there is one, and switches in this process when no watchdog can run.
///
/// To be used by one thread at a time.
class WatchdogSupervisor {
public:
    /// Starts a watchdog. `inner` switches in this process and must outlive it.
    WatchdogSupervisor(DisplaySwitch& inner, SupervisorSetup setup);

    /// As in `DisplaySwitch`. When the watchdog dies during the request:
    /// - a request to switch on is handed to the next watchdog: repeating it does no harm;
    /// - a request to switch off is undone by switching on, and answers 1004. How far it
    ///   came is unknown, and what killed one watchdog might kill the next and, in the
    ///   end, this process, with nobody left to bring the display back.
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled);

    /// Tells the watchdog that the application ends in good order, and waits for its end.
    /// Later changes are made in this process. Only the first call does anything.
    void goodbye();

    /// Replaces the watchdog if it has died between requests. To be called whenever
    /// `descriptor` is readable; never waits for the watchdog.
    void replaceIfDead();

    /// The connection; -1 when changes are made in this process.
    int descriptor() const { return watchdog_ ? watchdog_->link().descriptor() : -1; }

private:
    ServerStatus switchOn(DisplayID display);
    ServerStatus switchOff(DisplayID display);
    /// The watchdog's answer; std::nullopt when it died or did not answer in time.
    std::optional<ServerStatus> ask(DisplayID display, bool enabled);
    /// The watchdog's next message after the one that says it is ready.
    Received receive(std::chrono::milliseconds timeout);
    void replaceWatchdog();
    void startWatchdog();

    DisplaySwitch& inner_;
    SupervisorSetup setup_;
    /// Null when changes are made in this process.
    std::unique_ptr<RunningWatchdog> watchdog_;
    bool watchdogIsReady_ = false;
    SwitchedOff switchedOff_;
    CrashLoopDetector crashes_;
    std::uint32_t lastId_ = 0;
};

}  // namespace tavrel::watchdog
