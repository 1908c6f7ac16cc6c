#pragma once

#include <deque>
#include <future>
#include <mutex>
#include <thread>

#include "platform/DisplaySwitch.h"
#include "platform/posix/WakeUp.h"
#include "watchdog/application/WatchdogSupervisor.h"

namespace tavrel::watchdog {

/// A display switch whose changes are made by the watchdog: a process that outlives this one
/// just long enough to switch on again what it had switched off. Answers what `inner` would.
///
/// Thread-safe. Changes are made one at a time, in the order they were asked for, also
/// when they are made in this process because no watchdog can run.
class GuardedSwitch : public DisplaySwitch {
public:
    /// Starts a watchdog, and from now on another whenever it dies. `inner` and `queries`, about
    /// the same displays, must outlive it.
    GuardedSwitch(DisplaySwitch& inner, DisplayQueries& queries, SupervisorSetup setup);
    /// Without a goodbye before, the watchdog switches on what is off.
    ~GuardedSwitch() override;

    GuardedSwitch(const GuardedSwitch&) = delete;
    GuardedSwitch& operator=(const GuardedSwitch&) = delete;

    /// The application is all right: to be called about once a second on the thread whose
    /// hanging the watchdog is to notice. Never blocks.
    void beat();

    /// The application is about to end: from now on a watchdog that hangs is not waited for.
    /// Never blocks.
    void hurry() { supervisor_.hurry(); }

    /// Sees to it that nothing we switched off stays off, dismisses the watchdog, and returns
    /// when that has ended; see `WatchdogSupervisor`. Later changes are made in this process.
    void goodbye();

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    using Job = std::packaged_task<ServerStatus()>;

    ServerStatus perform(Job job);
    void work();
    /// Blocks until there is something to do: a job, the watchdog's end, or our own.
    void awaitWork() const;

    DisplaySwitch& inner_;
    /// Used by `thread_` only, but for what any thread may call.
    WatchdogSupervisor supervisor_;
    WakeUp wakeUp_;
    std::mutex mutex_;
    std::deque<Job> jobs_;
    bool isBeating_ = false;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace tavrel::watchdog
