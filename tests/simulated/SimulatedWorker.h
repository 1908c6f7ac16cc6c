#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/MainQueue.h"

namespace tavrel {

/// A real thread that runs only while it has been lent the turn.
class SimulatedWorker {
public:
    SimulatedWorker();
    /// REQUIRES: no job is suspended.
    ~SimulatedWorker();

    /// Gives the worker its next job; it starts at the next `resume`.
    void assign(Task job);

    /// Lends the turn until the job ends or suspends itself. Returns whether it ended.
    bool resume();

    /// Called by the job: hands the turn back until the next `resume`.
    void suspend();

    /// Whether it is in the middle of a job, waiting for the turn.
    bool isSuspended() const { return suspended_; }

    /// The worker whose thread the caller is on, or null.
    static SimulatedWorker* current();

private:
    void run();
    void handBack(std::unique_lock<std::mutex>& lock);

    std::mutex mutex_;
    std::condition_variable changed_;
    bool hasTurn_ = false;
    bool stopping_ = false;
    bool jobEnded_ = false;
    bool suspended_ = false;
    Task job_;
    std::thread thread_;
};

}  // namespace tavrel
