#include "watchdog/application/GuardedSwitch.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>
#include <utility>

namespace tavrel::watchdog {

namespace {

std::pair<FileDescriptor, FileDescriptor> socketPairOrThrow() {
    auto ends = makeSocketPair();
    if (!ends) {
        throw std::system_error(errno, std::generic_category(), "socketpair");
    }
    return std::move(*ends);
}

}  // namespace

GuardedSwitch::GuardedSwitch(DisplaySwitch& inner, SupervisorSetup setup)
    : inner_(inner),
      supervisor_(inner, std::move(setup)),
      wake_(socketPairOrThrow()),
      thread_([this] { work(); }) {}

GuardedSwitch::~GuardedSwitch() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wake();
    thread_.join();
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
    wake();
    return status.get();
}

void GuardedSwitch::work() {
    bool isEnding = false;
    while (!isEnding) {
        awaitWork();
        std::deque<Job> jobs;
        {
            const std::lock_guard lock(mutex_);
            jobs.swap(jobs_);
            isEnding = isEnding_;
        }
        for (Job& job : jobs) {
            job();
        }
        supervisor_.replaceIfDead();
    }
}

void GuardedSwitch::awaitWork() const {
    std::array<pollfd, 2> sources{
        pollfd{.fd = wake_.first.number(), .events = POLLIN, .revents = 0},
        // Negative, and so ignored, while there is no watchdog.
        pollfd{.fd = supervisor_.descriptor(), .events = POLLIN, .revents = 0}};
    poll(sources.data(), sources.size(), -1);
    if (sources[0].revents != 0) {
        std::array<char, 64> calls{};
        [[maybe_unused]] const auto size = read(wake_.first.number(), calls.data(), calls.size());
    }
}

void GuardedSwitch::wake() {
    // If this blocks, the thread has calls enough to wake up by.
    const char call = 0;
    while (write(wake_.second.number(), &call, 1) < 0 && errno == EINTR) {
    }
}

}  // namespace tavrel::watchdog
