#include "watchdog/application/GuardedSwitch.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <utility>

namespace tavrel::watchdog {

GuardedSwitch::GuardedSwitch(DisplaySwitch& inner, DisplayQueries& queries, SupervisorSetup setup)
    : inner_(inner),
      now_(setup.stopwatch),
      longestWait_(setup.urgentTimeout),
      firstStart_(setup.firstStart),
      supervisor_(inner, queries, std::move(setup)),
      thread_([this] { work(); }) {}

GuardedSwitch::~GuardedSwitch() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wakeUp_.wake();
    thread_.join();
}

void GuardedSwitch::beat() {
    if (supervisor_.passBeatOn()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        isBeating_ = true;
    }
    wakeUp_.wake();
}

std::size_t GuardedSwitch::waiting() {
    const std::lock_guard lock(mutex_);
    return waiting_.size();
}

void GuardedSwitch::goodbye() {
    const auto request = std::make_shared<Request>(Request{Job([this] {
        supervisor_.goodbye();
        return serverStatus::success;
    })});
    add(request).get();
}

ServerStatus GuardedSwitch::setDisplayEnabled(DisplayID display, bool enabled) {
    return enabled ? switchOn(display) : switchOff(display);
}

ServerStatus GuardedSwitch::switchOff(DisplayID display) {
    const auto request = std::make_shared<Request>(
        Request{Job([this, display] { return switchOffUnlessRescued(display); })});
    return add(request).get();
}

ServerStatus GuardedSwitch::switchOn(DisplayID display) {
    const std::chrono::nanoseconds asked = now_();
    const auto request = std::make_shared<Request>(Request{
        Job([this, display] { return supervisor_.setDisplayEnabled(display, true); }), display});
    std::future<ServerStatus> status = add(request);
    {
        std::unique_lock lock(mutex_);
        const auto hasBegun = [&] {
            return std::find(waiting_.begin(), waiting_.end(), request) == waiting_.end();
        };
        request->isOvertaking =
            !waitUntil(begun_, lock, now_, busySince_.value_or(asked) + longestWait_, hasBegun);
        if (!request->isOvertaking) {
            lock.unlock();
            return status.get();
        }
    }
    const ServerStatus overtaken = inner_.setDisplayEnabled(display, true);
    ++rescuesEnded_;
    return overtaken;
}

ServerStatus GuardedSwitch::switchOffUnlessRescued(DisplayID display) {
    if (isRescued(display)) {
        return serverStatus::cannotComplete;
    }
    const ServerStatus status = supervisor_.setDisplayEnabled(display, false);
    // It comes on again when that request's turn comes, which is before anything later.
    return isRescued(display) ? serverStatus::cannotComplete : status;
}

bool GuardedSwitch::isRescued(DisplayID display) {
    const std::lock_guard lock(mutex_);
    return std::any_of(waiting_.begin(), waiting_.end(), [&](const auto& each) {
        return each->isOvertaking && each->rescued == display;
    });
}

std::future<ServerStatus> GuardedSwitch::add(const std::shared_ptr<Request>& request) {
    std::future<ServerStatus> status = request->job.get_future();
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(request);
    }
    wakeUp_.wake();
    return status;
}

void GuardedSwitch::work() {
    awaitWork(firstStart_);
    supervisor_.start();
    while (doWork()) {
        awaitWork();
    }
}

bool GuardedSwitch::doWork() {
    bool isBeating = false;
    bool isEnding = false;
    {
        const std::lock_guard lock(mutex_);
        isBeating = std::exchange(isBeating_, false);
        isEnding = isEnding_;
    }
    while (const auto request = nextRequest()) {
        request->job();
    }
    supervisor_.replaceIfDead();
    if (isBeating) {
        supervisor_.beat();
    }
    return !isEnding;
}

std::shared_ptr<GuardedSwitch::Request> GuardedSwitch::nextRequest() {
    std::shared_ptr<Request> next;
    {
        const std::lock_guard lock(mutex_);
        busySince_.reset();
        if (!waiting_.empty()) {
            next = std::move(waiting_.front());
            waiting_.pop_front();
            busySince_ = now_();
        }
    }
    begun_.notify_all();
    return next;
}

void GuardedSwitch::awaitWork(std::chrono::milliseconds timeout) const {
    std::array sources{pollfd{.fd = wakeUp_.descriptor(), .events = POLLIN, .revents = 0},
                       // Negative, and so ignored, while there is no watchdog.
                       pollfd{.fd = supervisor_.descriptor(), .events = POLLIN, .revents = 0}};
    poll(sources.data(), sources.size(), static_cast<int>(timeout.count()));
    wakeUp_.drain();
}

}  // namespace tavrel::watchdog
