#include "tests/simulated/SimulatedWorker.h"

#include <utility>

namespace tavrel {

namespace {
// Which worker a thread belongs to is a property of the thread, not of any object.
thread_local SimulatedWorker* currentWorker =  // NOLINT(*-avoid-non-const-global-variables)
    nullptr;
}  // namespace

SimulatedWorker::SimulatedWorker() : thread_([this] { run(); }) {}

SimulatedWorker::~SimulatedWorker() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        hasTurn_ = true;
    }
    changed_.notify_all();
    thread_.join();
}

void SimulatedWorker::assign(Task job) {
    job_ = std::move(job);
}

bool SimulatedWorker::resume() {
    std::unique_lock lock(mutex_);
    jobEnded_ = false;
    hasTurn_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !hasTurn_; });
    return jobEnded_;
}

void SimulatedWorker::suspend() {
    std::unique_lock lock(mutex_);
    suspended_ = true;
    handBack(lock);
    suspended_ = false;
}

SimulatedWorker* SimulatedWorker::current() {
    return currentWorker;
}

void SimulatedWorker::run() {
    currentWorker = this;
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return hasTurn_; });
    while (!stopping_) {
        lock.unlock();
        // What the job holds is released on this thread too, as a real queue would.
        std::exchange(job_, nullptr)();
        lock.lock();
        jobEnded_ = true;
        handBack(lock);
    }
}

void SimulatedWorker::handBack(std::unique_lock<std::mutex>& lock) {
    hasTurn_ = false;
    changed_.notify_all();
    changed_.wait(lock, [this] { return hasTurn_; });
}

}  // namespace tavrel
