#include "tests/simulated/SimulatedScheduler.h"

#include <algorithm>
#include <utility>

#include "tests/simulated/SimulatedWorker.h"

namespace tavrel {

/// What a repeating timer and the queue share: either may end it.
struct SimulatedScheduler::Repeat {
    SimulatedScheduler* scheduler;
    Process process;
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
    Main(SimulatedScheduler& scheduler, Process process)
        : scheduler_(scheduler), process_(process) {}

    void async(Task task) override { asyncAfter(Delay::zero(), std::move(task)); }

    void asyncAfter(Delay delay, Task task) override {
        scheduler_.addMainTask(process_, std::max(delay, Delay::zero()), std::move(task));
    }

    std::unique_ptr<RepeatingTimer> repeat(Delay interval, Task tick) override {
        auto shared = std::make_shared<Repeat>(
            Repeat{&scheduler_, process_, interval, scheduler_.now() + interval, std::move(tick)});
        scheduler_.queueTick(shared);
        return std::make_unique<Timer>(std::move(shared));
    }

    bool isCurrent() const override { return std::this_thread::get_id() == scheduler_.mainThread_; }

private:
    SimulatedScheduler& scheduler_;
    const Process process_;
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
      main_{std::make_unique<Main>(*this, Process::first),
            std::make_unique<Main>(*this, Process::second)},
      background_(std::make_unique<Background>(*this)) {}

SimulatedScheduler::SimulatedScheduler(Chooser& chooser)
    : mainThread_(std::this_thread::get_id()),
      chooser_(chooser),
      main_{std::make_unique<Main>(*this, Process::first),
            std::make_unique<Main>(*this, Process::second)},
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
    dropMainTasks(Process::first);
    dropMainTasks(Process::second);
}

void SimulatedScheduler::dropMainTasks(Process process) {
    const auto next = [&] {
        return std::find_if(mainTasks_.begin(), mainTasks_.end(),
                            [&](const auto& each) { return each.second.process == process; });
    };
    // What a dropped task holds may add further tasks while it is destroyed.
    for (auto task = next(); task != mainTasks_.end(); task = next()) {
        mainTasks_.extract(task);
    }
}

MainQueue& SimulatedScheduler::mainQueue(Process process) {
    return *main_.at(static_cast<std::size_t>(process));
}
BackgroundQueue& SimulatedScheduler::backgroundQueue() {
    return *background_;
}

void SimulatedScheduler::settle() {
    for (;;) {
        promoteDue();
        const DueTasks due = dueMainTasks();
        const std::size_t choices = readyJobs_.size() + due.count;
        if (choices == 0) {
            return;
        }
        const std::size_t choice = due.count == 0 ? 0 : choose(choices);
        if (choice < due.count) {
            runMainTask(due.tasks.at(choice));
        } else {
            runOneJob();
        }
    }
}

void SimulatedScheduler::runMainTasks() {
    for (DueTasks due = dueMainTasks(); due.count > 0; due = dueMainTasks()) {
        runMainTask(due.tasks.front());
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

bool SimulatedScheduler::advanceWithMainBlocked(Delay limit, const std::function<bool()>& done,
                                                Process process) {
    const Delay end = now_ + limit;
    blocked_ = process;
    for (settle(); !done() && now_ < end; settle()) {
        now_ = nextDeadline(end);
    }
    blocked_.reset();
    return done();
}

std::size_t SimulatedScheduler::pendingMainTasks() const {
    return static_cast<std::size_t>(
        std::distance(mainTasks_.begin(), mainTasks_.upper_bound({now_, sequence_})));
}

std::vector<SimulatedScheduler::Pending> SimulatedScheduler::pending() const {
    std::vector<Pending> all;
    for (const auto& [deadline, waiting] : mainTasks_) {
        all.push_back(
            {std::max(deadline.first, now_), deadline.second, waiting.task.target_type().name()});
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

void SimulatedScheduler::addMainTask(Process process, Delay delay, Task task) {
    mainTasks_.emplace(Deadline{now_ + delay, ++sequence_}, MainTask{process, std::move(task)});
}

void SimulatedScheduler::queueTick(const std::shared_ptr<Repeat>& repeat) {
    addMainTask(repeat->process, repeat->due - now_, [repeat] {
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

SimulatedScheduler::DueTasks SimulatedScheduler::dueMainTasks() {
    DueTasks due;
    for (auto each = mainTasks_.begin();
         each != mainTasks_.end() && each->first.first <= now_ && due.count < due.tasks.size();
         ++each) {
        const Process process = each->second.process;
        const bool isFirst = due.count == 0 || due.tasks.front()->second.process != process;
        if (isFirst && process != blocked_) {
            due.tasks.at(due.count++) = each;
        }
    }
    return due;
}

void SimulatedScheduler::runMainTask(MainTasks::iterator due) {
    ++steps_;
    const auto node = mainTasks_.extract(due);
    node.mapped().task();
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
    const auto task = std::find_if(mainTasks_.begin(), mainTasks_.end(), [&](const auto& each) {
        return each.second.process != blocked_;
    });
    if (task != mainTasks_.end()) {
        next = std::min(next, task->first.first);
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
