#include "tests/simulated/SimulatedScheduler.h"

#include <algorithm>
#include <utility>

#include "tests/simulated/SimulatedWorker.h"

namespace tavrel {

/// What a repeating timer and the queue share: either may end it.
struct SimulatedScheduler::Repeat {
    SimulatedScheduler* scheduler;
    Delay interval;
    Delay due;
    Task tick;
};

class SimulatedScheduler::Timer : public RepeatingTimer {
public:
    explicit Timer(std::shared_ptr<Repeat> repeat) : repeat_(std::move(repeat)) {}
    ~Timer() override { Timer::invalidate(); }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    void invalidate() override { repeat_->tick = nullptr; }

private:
    std::shared_ptr<Repeat> repeat_;
};

class SimulatedScheduler::Main : public MainQueue {
public:
    explicit Main(SimulatedScheduler& scheduler) : scheduler_(scheduler) {}

    void async(Task task) override { scheduler_.addMainTask(Delay::zero(), std::move(task)); }

    void asyncAfter(Delay delay, Task task) override {
        scheduler_.addMainTask(std::max(delay, Delay::zero()), std::move(task));
    }

    std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) override {
        auto shared = std::make_shared<Repeat>(
            Repeat{&scheduler_, interval, scheduler_.now() + interval, std::move(tick)});
        scheduler_.queueTick(shared);
        return std::make_unique<Timer>(std::move(shared));
    }

    bool isCurrent() const override { return std::this_thread::get_id() == scheduler_.mainThread_; }

private:
    SimulatedScheduler& scheduler_;
};

class SimulatedScheduler::Background : public BackgroundQueue {
public:
    explicit Background(SimulatedScheduler& scheduler) : scheduler_(scheduler) {}

    void async(Task job) override {
        if (scheduler_.ending_) {
            return;
        }
        if (scheduler_.idleWorkers_.empty()) {
            scheduler_.workers_.push_back(std::make_unique<SimulatedWorker>());
            scheduler_.idleWorkers_.push_back(scheduler_.workers_.back().get());
        }
        SimulatedWorker* worker = scheduler_.idleWorkers_.back();
        scheduler_.idleWorkers_.pop_back();
        worker->assign(std::move(job));
        scheduler_.readyJobs_.push_back(worker);
    }

private:
    SimulatedScheduler& scheduler_;
};

SimulatedScheduler::SimulatedScheduler(std::uint64_t seed)
    : mainThread_(std::this_thread::get_id()),
      dice_(std::make_unique<SeededChooser>(seed)),
      chooser_(*dice_),
      main_(std::make_unique<Main>(*this)),
      background_(std::make_unique<Background>(*this)) {}

SimulatedScheduler::SimulatedScheduler(Chooser& chooser)
    : mainThread_(std::this_thread::get_id()),
      chooser_(chooser),
      main_(std::make_unique<Main>(*this)),
      background_(std::make_unique<Background>(*this)) {}

SimulatedScheduler::~SimulatedScheduler() {
    shutDown();
}

void SimulatedScheduler::shutDown() {
    ending_ = true;
    for (const auto& worker : workers_) {
        while (worker->isSuspended()) {
            worker->resume();
        }
    }
    readyJobs_.clear();
    sleepers_.clear();
    idleWorkers_.clear();
    workers_.clear();
    dropMainTasks();
}

void SimulatedScheduler::dropMainTasks() {
    // What a dropped task holds may add further tasks while it is destroyed.
    while (!mainTasks_.empty()) {
        mainTasks_.extract(mainTasks_.begin());
    }
}

MainQueue& SimulatedScheduler::mainQueue() {
    return *main_;
}
BackgroundQueue& SimulatedScheduler::backgroundQueue() {
    return *background_;
}

void SimulatedScheduler::settle() {
    for (;;) {
        promoteDue();
        const std::size_t choices = readyJobs_.size() + (mainTaskIsDue() ? 1 : 0);
        if (choices == 0) {
            return;
        }
        if (mainTaskIsDue() && choose(choices) == 0) {
            runOneMainTask();
        } else {
            runOneJob();
        }
    }
}

void SimulatedScheduler::runMainTasks() {
    while (mainTaskIsDue()) {
        runOneMainTask();
    }
}

void SimulatedScheduler::runBackgroundJobs() {
    promoteDue();
    while (!readyJobs_.empty()) {
        runOneJob();
    }
}

void SimulatedScheduler::advance(Delay duration) {
    const Delay end = now_ + duration;
    settle();
    while (now_ < end) {
        now_ = nextDeadline(end);
        settle();
    }
}

bool SimulatedScheduler::advanceWithMainBlocked(Delay limit, const std::function<bool()>& done) {
    const Delay end = now_ + limit;
    for (;;) {
        runBackgroundJobs();
        if (done() || now_ >= end) {
            return done();
        }
        now_ = sleepers_.empty() ? end : std::min(end, sleepers_.begin()->first.first);
    }
}

std::size_t SimulatedScheduler::pendingMainTasks() const {
    return static_cast<std::size_t>(
        std::distance(mainTasks_.begin(), mainTasks_.upper_bound({now_, sequence_})));
}

std::vector<SimulatedScheduler::Pending> SimulatedScheduler::pending() const {
    std::vector<Pending> all;
    for (const auto& [deadline, task] : mainTasks_) {
        all.push_back({std::max(deadline.first, now_), deadline.second, task.target_type().name()});
    }
    for (const auto& [deadline, worker] : sleepers_) {
        all.push_back({std::max(deadline.first, now_), deadline.second, ""});
    }
    return all;
}

void SimulatedScheduler::sleep(Delay duration) {
    SimulatedWorker* worker = SimulatedWorker::current();
    if (worker == nullptr || ending_) {
        return;
    }
    sleepers_.emplace(Deadline{now_ + duration, ++sequence_}, worker);
    worker->suspend();
}

void SimulatedScheduler::addMainTask(Delay delay, Task task) {
    mainTasks_.emplace(Deadline{now_ + delay, ++sequence_}, std::move(task));
}

void SimulatedScheduler::queueTick(const std::shared_ptr<Repeat>& repeat) {
    addMainTask(repeat->due - now_, [repeat] {
        if (repeat->tick == nullptr) {
            return;
        }
        repeat->due += repeat->interval;
        repeat->scheduler->queueTick(repeat);
        // The tick may invalidate its own timer.
        const Task tick = repeat->tick;
        tick();
    });
}

void SimulatedScheduler::promoteDue() {
    while (!sleepers_.empty() && sleepers_.begin()->first.first <= now_) {
        readyJobs_.push_back(sleepers_.begin()->second);
        sleepers_.erase(sleepers_.begin());
    }
}

bool SimulatedScheduler::mainTaskIsDue() const {
    return !mainTasks_.empty() && mainTasks_.begin()->first.first <= now_;
}

void SimulatedScheduler::runOneMainTask() {
    ++steps_;
    const auto node = mainTasks_.extract(mainTasks_.begin());
    node.mapped()();
    endStep();
}

void SimulatedScheduler::runOneJob() {
    ++steps_;
    const std::size_t index = choose(readyJobs_.size());
    SimulatedWorker* worker = readyJobs_[index];
    readyJobs_.erase(readyJobs_.begin() + static_cast<std::ptrdiff_t>(index));
    if (worker->resume()) {
        idleWorkers_.push_back(worker);
    }
    endStep();
}

void SimulatedScheduler::endStep() {
    if (observer_ != nullptr) {
        observer_();
    }
}

Delay SimulatedScheduler::nextDeadline(Delay limit) const {
    Delay next = limit;
    if (!mainTasks_.empty()) {
        next = std::min(next, mainTasks_.begin()->first.first);
    }
    if (!sleepers_.empty()) {
        next = std::min(next, sleepers_.begin()->first.first);
    }
    return std::max(next, now_);
}

std::size_t SimulatedScheduler::choose(std::size_t count) {
    return count == 1 ? 0 : chooser_.choose(count);
}

}  // namespace tavrel
