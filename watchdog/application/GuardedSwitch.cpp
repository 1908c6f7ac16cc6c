#include "watchdog/application/GuardedSwitch.h"

#include <poll.h>

#include <array>
#include <utility>

namespace tavrel::watchdog {

GuardedSwitch::GuardedSwitch(DisplaySwitch& inner, DisplayQueries& queries, SupervisorSetup setup)
    : inner_(inner), supervisor_(inner, queries, std::move(setup)), thread_([this] { work(); }) {}

GuardedSwitch::~GuardedSwitch() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wakeUp_.wake();
    thread_.join();
}

void GuardedSwitch::beat() {
    {
        const std::lock_guard lock(mutex_);
        isBeating_ = true;
    }
    wakeUp_.wake();
}

void GuardedSwitch::goodbye() {
    perform(Job([this] {
        supervisor_.goodbye();
        return serverStatus::success;
    }));
}

ServerStatus GuardedSwitch::setDisplayEnabled(DisplayID display, bool enabled) {
    return perform(
        Job([this, display, enabled] { return supervisor_.setDisplayEnabled(display, enabled); }));
}

ServerStatus GuardedSwitch::perform(Job job) {
    std::future<ServerStatus> status = job.get_future();
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    wakeUp_.wake();
    return status.get();
}

void GuardedSwitch::work() {
    bool isEnding = false;
    while (!isEnding) {
        awaitWork();
        std::deque<Job> jobs;
        bool isBeating = false;
        {
            const std::lock_guard lock(mutex_);
            jobs.swap(jobs_);
            isBeating = std::exchange(isBeating_, false);
            isEnding = isEnding_;
        }
        for (Job& job : jobs) {
            job();
        }
        supervisor_.replaceIfDead();
        if (isBeating) {
            supervisor_.beat();
        }
    }
}

void GuardedSwitch::awaitWork() const {
    std::array<pollfd, 2> sources{
        pollfd{.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0},
        // Negative, and so ignored, while there is no watchdog.
        pollfd{.fd = supervisor_.descriptor(), .events = POLLIN, .revents = 0}};
    poll(sources.data(), sources.size(), -1);
    wakeUp_.drain();
}

}  // namespace tavrel::watchdog
