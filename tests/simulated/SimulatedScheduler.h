#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"

namespace tavrel {

class SimulatedWorker;

/// Simulated threads and monotonic time.
///
/// Exactly one piece of work runs at any moment. The thread that made the scheduler is
/// the main thread; it runs main-queue tasks itself and lends the turn to worker threads
/// for background jobs. A job can sleep in simulated time, and other work runs meanwhile,
/// so slow platform calls overlap with everything else as they do in earnest. What runs
/// next, among all that could, is drawn from the seed: the same seed and the same calls
/// give the same run.
///
/// Time moves only when `advance` moves it. Main thread only, but for `sleep` and what
/// the queues allow.
class SimulatedScheduler {
public:
    explicit SimulatedScheduler(std::uint64_t seed = 1);
    ~SimulatedScheduler();

    SimulatedScheduler(const SimulatedScheduler&) = delete;
    SimulatedScheduler& operator=(const SimulatedScheduler&) = delete;

    /// Lets sleeping jobs run to their end at once and drops all other work, for good.
    void shutDown();

    /// Drops all that waits for the main thread, due or not, as a process that ends does.
    void dropMainTasks();

    MainQueue& mainQueue();
    BackgroundQueue& backgroundQueue();

    /// Monotonic time since the scheduler was made.
    Delay now() const { return now_; }

    /// Runs all that is due, background and main, until nothing is; time stands still.
    void settle();

    /// Runs the main-queue tasks that are due now and those they add, nothing else.
    void runMainTasks();

    /// Runs each background job that can run until it ends or sleeps, nothing else.
    void runBackgroundJobs();

    /// Settles, then moves time on by `duration`, stopping to settle at each moment at
    /// which something becomes due.
    void advance(Delay duration);

    /// Work that has not run yet: main tasks due now, and jobs not yet ended.
    std::size_t pendingMainTasks() const;
    std::size_t pendingBackgroundJobs() const { return readyJobs_.size() + sleepers_.size(); }

    /// Suspends the calling background job for `duration` of simulated time. On the main
    /// thread it does nothing: a main thread that waits would stop the simulated world.
    void sleep(Delay duration);

    /// Moves time on by at most `limit` while the main thread is held up: only background
    /// jobs run. Stops as soon as `done` says so; returns whether it did.
    bool advanceWithMainBlocked(Delay limit, const std::function<bool()>& done);

    /// From now on `observer` is called on the main thread after each step.
    void setObserver(Task observer) { observer_ = std::move(observer); }

    /// How many times a task, tick or job has been started.
    std::uint64_t steps() const { return steps_; }

private:
    class Main;
    class Background;
    class Timer;
    struct Repeat;
    using Deadline = std::pair<Delay, std::uint64_t>;

    void addMainTask(Delay delay, Task task);
    void queueTick(const std::shared_ptr<Repeat>& repeat);
    void promoteDue();
    bool mainTaskIsDue() const;
    void runOneMainTask();
    void runOneJob();
    void endStep();
    Delay nextDeadline(Delay limit) const;
    std::size_t draw(std::size_t count);

    std::thread::id mainThread_;
    std::unique_ptr<Main> main_;
    std::unique_ptr<Background> background_;
    std::mt19937_64 random_;
    Delay now_{0};
    std::uint64_t sequence_ = 0;
    std::uint64_t steps_ = 0;
    bool ending_ = false;
    Task observer_;

    std::map<Deadline, Task> mainTasks_;
    /// Jobs that can go on now: new ones, and sleepers whose time has come.
    std::vector<SimulatedWorker*> readyJobs_;
    std::map<Deadline, SimulatedWorker*> sleepers_;
    std::vector<std::unique_ptr<SimulatedWorker>> workers_;
    std::vector<SimulatedWorker*> idleWorkers_;
};

}  // namespace tavrel
