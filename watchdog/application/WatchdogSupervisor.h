#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <variant>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/MonotonicClock.h"
#include "watchdog/application/RunningWatchdog.h"
#include "watchdog/application/StartSchedule.h"
#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::watchdog {

/// What a supervisor needs besides displays.
struct SupervisorSetup {
    StartWatchdog startWatchdog;
    /// The clock of the pauses between the starts of watchdogs.
    MonotonicClock now = steadyTime;
    /// The clock that says how long an answer has been waited for.
    MonotonicClock stopwatch = steadyTime;
    Pause pause = [](std::chrono::milliseconds time) { std::this_thread::sleep_for(time); };
    /// How long a watchdog may take to answer before it counts as hung. Longer than the
    /// slowest server is given.
    std::chrono::milliseconds answerTimeout{30'000};
    /// The same where nobody can wait that long: when no display is usable, or the application
    /// ends, and the server answers others.
    std::chrono::milliseconds urgentTimeout{2'000};
    /// How long the first watchdog may be put off while there is nothing for it to do.
    std::chrono::milliseconds firstStart{0};
};

/// The application's side of the conversation: has displays switched by a watchdog, sees to
/// it that there is one, and switches in this process when no watchdog can run.
///
/// To be used by one thread at a time, but for what says otherwise.
class WatchdogSupervisor {
public:
    /// `inner` switches in this process; it and `queries`, about the same displays, must outlive
    /// it.
    WatchdogSupervisor(DisplaySwitch& inner, DisplayQueries& queries, SupervisorSetup setup);

    /// Starts a watchdog, for as long as it takes the system to load it. Comes before any change
    /// or end that is asked for.
    void start() { startWatchdogIfDue(); }

    /// As in `DisplaySwitch`. When the watchdog dies or hangs during the request:
    /// - a request to switch on is handed to the next watchdog, or made in this process when
    ///   the watchdog hung: repeating it does no harm;
    /// - a request to switch off is undone by switching on, and answers 1004. How far it
    ///   came is unknown, and what killed one watchdog might kill the next and, in the
    ///   end, this process, with nobody left to bring the display back.
    ///
    /// A display whose switch-off ended with 1006 counts as off until the server says that it
    /// is on: the server may have got round to it after it was given up.
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled);

    /// To be called about once a second for as long as the application is all right, and not
    /// when it hangs. Passes that on to the watchdog, and starts one if there is none and it
    /// is time to try again.
    void beat();

    /// Does that if it is no more than to tell the watchdog; returns false otherwise, and then
    /// `beat` is to be called. For any thread, also during a request; never blocks for long.
    bool passBeatOn();

    /// From now on a watchdog that leaves a request unanswered for long is not waited for, even
    /// while a display is usable. For any thread, also during a request.
    void hurry() { isUrgent_ = true; }

    /// The application has begun to end, and these displays are to be on when it is gone, whoever
    /// switched them off: tells the watchdog, and each that takes its place, so that from now on
    /// it does no harm if this process ends before it has switched them on itself. For any
    /// thread, also during a request; never blocks for long.
    void handOver(const std::vector<DisplayID>& displays);

    /// Whether there is a watchdog that has been told of all that was handed over. For any thread.
    bool isHandedOver() const;

    /// How many changes have been asked for and have come to an end. For any thread.
    std::uint64_t changesEnded() const { return changesEnded_; }

    /// Ends in good order. What is off because of us, was refused when it was to be switched on,
    /// or has been handed over, is tried again as often as a watchdog would after a crash. If
    /// everything is on in the end, the watchdog is dismissed; if not, it is told of all that is
    /// left, and tries for itself. Returns when it has ended, or after some seconds. Later
    /// changes are made in this process. Only the first call does anything.
    void goodbye();

    /// Replaces the watchdog if it has died between requests. To be called whenever
    /// `descriptor` is readable; never waits for the watchdog.
    void replaceIfDead();

    /// The connection; -1 when changes are made in this process.
    int descriptor() const { return watchdog_ ? watchdog_->descriptor() : -1; }

private:
    /// Why a watchdog gave no answer.
    enum class NoAnswer { died, hung };
    using Answer = std::variant<ServerStatus, NoAnswer>;

    ServerStatus switchOn(DisplayID display);
    ServerStatus switchOff(DisplayID display);
    Answer ask(DisplayID display, bool enabled);
    /// The answer to the last request; `timedOut` when it is not worth waiting for it.
    Received awaitAnswer();
    bool isWaitingPointless();
    /// The watchdog's next message after the one that says it is ready.
    Received receive(std::chrono::milliseconds timeout);
    SwitchedOff left() const;
    void bringBackWhatIsLeft();
    std::unique_ptr<RunningWatchdog> takeWatchdog();
    void tellWhatIsHandedOver();
    void replaceWatchdog();
    void startWatchdogIfDue();

    DisplaySwitch& inner_;
    DisplayQueries& queries_;
    SupervisorSetup setup_;
    std::atomic<std::uint64_t> changesEnded_ = 0;
    /// For what any thread may use: `handedOver_`, `isTold_`, and `watchdog_`, which is only
    /// written under it.
    mutable std::mutex handOverMutex_;
    SwitchedOff handedOver_;
    /// Null when changes are made in this process.
    std::unique_ptr<RunningWatchdog> watchdog_;
    SwitchedOff switchedOff_;
    /// Whether that is in doubt, for other threads.
    std::atomic<bool> isInDoubt_ = false;
    /// Whoever switched them off: displays that were to be switched on, and the server refused.
    SwitchedOff refused_;
    StartSchedule schedule_;
    std::uint32_t lastId_ = 0;
    std::atomic<bool> isUrgent_ = false;
    bool hasEnded_ = false;
    bool watchdogIsReady_ = false;
    bool isTold_ = false;
};

}  // namespace tavrel::watchdog
