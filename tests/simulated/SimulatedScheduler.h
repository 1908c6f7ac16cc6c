#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platform/BackgroundQueue.h"
#include "platform/MainQueue.h"
#include "tests/simulated/Chooser.h"

namespace tavrel {

class SimulatedWorker;

/// Simulated threads and monotonic time.
///
/// Exactly one piece of work runs at any moment. The thread that created the scheduler is
/// the main thread, of each process if there are two; it runs main-queue tasks itself and gives
/// the turn to worker threads for background jobs. A job can sleep in simulated time while other
/// work runs, so slow platform calls overlap with everything else as they do on a real system. What
/// runs next, among all that could, is up to the chooser: the same choices and the same calls give
/// the same run.
///
/// Time moves only when `advance` moves it. Main thread only, except `sleep` and the queues.
class SimulatedScheduler {
public:
    /// Whose main thread: one can be blocked while the other goes on.
    enum class Process : std::size_t { first, second };

    /// Throws dice with this seed.
    explicit SimulatedScheduler(std::uint64_t seed = 1);
    /// `chooser` must outlive it.
    explicit SimulatedScheduler(Chooser& chooser);
    ~SimulatedScheduler();

    SimulatedScheduler(const SimulatedScheduler&) = delete;
    SimulatedScheduler& operator=(const SimulatedScheduler&) = delete;

    /// Lets sleeping jobs run to their end at once and drops all other work, for good.
    void shutDown();

    /// Drops everything that waits for a main thread, due or not, as the end of a process
    /// does.
    void dropMainTasks(Process process = Process::first);

    MainQueue& mainQueue(Process process = Process::first);
    BackgroundQueue& backgroundQueue();

    /// Monotonic time since the scheduler was created.
    Delay now() const { return now_; }

    /// Runs everything that is due, background and main, until nothing is. Time does not move.
    void settle();

    /// Runs the main-queue tasks that are due now and those they add, nothing else.
    void runMainTasks();

    /// Runs each background job that can run until it ends or sleeps, nothing else.
    void runBackgroundJobs();

    /// Settles, then moves time on by `duration`, settling again at each moment at which
    /// something becomes due.
    void advance(Delay duration);

    /// Work that has not run yet: main tasks due now, and jobs not yet ended.
    std::size_t pendingMainTasks() const;
    std::size_t pendingBackgroundJobs() const { return readyJobs_.size() + sleepers_.size(); }

    /// One piece of work that has been queued or put to sleep.
    struct Pending {
        /// When it runs or goes on; not before `now`.
        Delay due;
        /// No two of one scheduler have the same; later ones have greater ones.
        std::uint64_t number;
        /// Names the closure in the source; empty for a job that sleeps.
        std::string code;
    };

    /// The tasks of the main queue in the order in which they will run, then the jobs that
    /// sleep in the order in which they will wake.
    std::vector<Pending> pending() const;

    /// Suspends the calling background job for `duration` of simulated time. On the main
    /// thread it does nothing: a main thread that waits would stop the simulated world.
    void sleep(Delay duration);

    /// Moves time on by at most `limit` while a process's main thread is blocked: only background
    /// jobs run, and the other process. Stops as soon as `done` returns true; returns whether it
    /// did.
    bool advanceWithMainBlocked(Delay limit, const std::function<bool()>& done,
                                Process process = Process::first);

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

    struct MainTask {
        Process process;
        Task task;
    };
    using MainTasks = std::map<Deadline, MainTask>;
    /// For each process, what its main thread can do now; there are `count`.
    struct DueTasks {
        std::array<MainTasks::iterator, 2> tasks;
        std::size_t count = 0;
    };

    void addMainTask(Process process, Delay delay, Task task);
    void queueTick(const std::shared_ptr<Repeat>& repeat);
    void promoteDue();
    DueTasks dueMainTasks();
    std::size_t choose(std::size_t count);
    void runMainTask(MainTasks::iterator due);
    void runOneJob();
    void endStep();
    Delay nextDeadline(Delay limit) const;

    std::thread::id mainThread_;
    std::unique_ptr<Chooser> dice_;
    Chooser& chooser_;
    std::array<std::unique_ptr<Main>, 2> main_;
    std::unique_ptr<Background> background_;
    Delay now_{0};
    std::uint64_t sequence_ = 0;
    std::uint64_t steps_ = 0;
    bool ending_ = false;
    Task observer_;

    MainTasks mainTasks_;
    std::optional<Process> blocked_;
    /// Jobs that can go on now: new ones, and sleepers whose time has come.
    std::vector<SimulatedWorker*> readyJobs_;
    std::map<Deadline, SimulatedWorker*> sleepers_;
    std::vector<std::unique_ptr<SimulatedWorker>> workers_;
    std::vector<SimulatedWorker*> idleWorkers_;
};

}  // namespace tavrel
