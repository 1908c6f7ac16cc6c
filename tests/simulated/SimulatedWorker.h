#pragma once

#include <condition_variable>
#include <mutex>
#include <thread>

#include "platform/MainQueue.h"

namespace tavrel {

/// A real thread that runs only while it has the turn.
class SimulatedWorker {
public:
    SimulatedWorker();
    /// REQUIRES: no job is suspended.
    ~SimulatedWorker();

    /// Gives the worker its next job; it starts at the next `resume`.
    void assign(Task job);

    /// Gives the worker the turn until its job ends or suspends itself. Returns whether it
    /// ended.
    bool resume();

    /// Called by the job: gives the turn back until the next `resume`.
    void suspend();

    /// Whether its job is suspended.
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
