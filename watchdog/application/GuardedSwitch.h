#pragma once

#include <deque>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/DisplaySwitch.h"
#include "platform/posix/FileDescriptor.h"
#include "watchdog/application/WatchdogSupervisor.h"

namespace tavrel::watchdog {

/// A lifecycle whose changes are made by a guard: a process that outlives this one just
/// long enough to switch on again what it had switched off. What it answers is the same as
/// what `inner` would.
///
/// Changes are made strictly one at a time, in the order they were asked for, also by the
/// threads of this process when there can be no guard.
class GuardedSwitch : public DisplaySwitch {
public:
    /// Starts a guard, and from now on another whenever it dies. `inner` must outlive it.
    GuardedSwitch(DisplaySwitch& inner, SupervisorSetup surroundings);
    /// Without a goodbye before, the guard switches on what is off.
    ~GuardedSwitch() override;

    GuardedSwitch(const GuardedSwitch&) = delete;
    GuardedSwitch& operator=(const GuardedSwitch&) = delete;

    /// Tells the guard that there is nothing left to do, and returns when it has ended.
    /// From any thread. What is switched afterwards is switched in this process.
    void goodbye();

    bool canSwitch() override { return inner_.canSwitch(); }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

private:
    using Job = std::packaged_task<ServerStatus()>;

    ServerStatus perform(Job job);
    void work();
    /// Returns when there is something to do: a job, the guard's end, or our own.
    void awaitWork() const;
    void wake();

    DisplaySwitch& inner_;
    /// Used by `thread_` only.
    WatchdogSupervisor keeper_;
    /// What is written to the second end wakes the thread, which reads from the first.
    std::pair<FileDescriptor, FileDescriptor> wake_;
    std::mutex mutex_;
    std::deque<Job> jobs_;
    bool isEnding_ = false;
    std::thread thread_;
};

}  // namespace tavrel::watchdog
