#include "watchdog/application/WatchdogSupervisor.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace tavrel::watchdog {

WatchdogSupervisor::WatchdogSupervisor(DisplaySwitch& inner, SupervisorSetup setup)
    : inner_(inner), setup_(std::move(setup)) {
    startWatchdog();
}

ServerStatus WatchdogSupervisor::setDisplayEnabled(DisplayID display, bool enabled) {
    return enabled ? switchOn(display) : switchOff(display);
}

void WatchdogSupervisor::goodbye() {
    if (watchdog_) {
        watchdog_->link().send({.kind = Message::Kind::goodbye});
        watchdog_.reset();
    }
}

void WatchdogSupervisor::replaceIfDead() {
    if (watchdog_ && receive(std::chrono::milliseconds::zero()) != Received(NoMessage::timedOut)) {
        replaceWatchdog();
    }
}

ServerStatus WatchdogSupervisor::switchOn(DisplayID display) {
    std::optional<ServerStatus> status;
    // Bounded, also for watchdogs that crash too slowly for the detector.
    for (std::size_t crashes = 0; watchdog_ && !status && crashes < CrashLoopDetector::tooMany;
         ++crashes) {
        status = ask(display, true);
        if (!status) {
            replaceWatchdog();
        }
    }
    if (!status) {
        status = inner_.setDisplayEnabled(display, true);
    }
    if (*status == serverStatus::success) {
        switchedOff_.remove(display);
    }
    return *status;
}

ServerStatus WatchdogSupervisor::switchOff(DisplayID display) {
    const bool wasOff = switchedOff_.contains(display);
    // Beforehand, so that the next watchdog is told of it if this one dies.
    switchedOff_.add(display);
    const std::optional<ServerStatus> status =
        watchdog_ ? ask(display, false) : inner_.setDisplayEnabled(display, false);
    if (!status) {
        replaceWatchdog();
        switchOn(display);
        return serverStatus::cannotComplete;
    }
    if (*status != serverStatus::success && !wasOff) {
        switchedOff_.remove(display);
    }
    return *status;
}

std::optional<ServerStatus> WatchdogSupervisor::ask(DisplayID display, bool enabled) {
    lastId_ = std::max(lastId_ + 1, 1U);
    if (!watchdog_->link().send(
            {.kind = enabled ? Message::Kind::switchOn : Message::Kind::switchOff,
             .id = lastId_,
             .display = display})) {
        return std::nullopt;
    }
    const Received received = receive(setup_.answerTimeout);
    const auto* message = std::get_if<Message>(&received);
    if (message == nullptr || message->kind != Message::Kind::answer || message->id != lastId_) {
        return std::nullopt;
    }
    return message->status;
}

Received WatchdogSupervisor::receive(std::chrono::milliseconds timeout) {
    const Received received = watchdog_->link().receive(timeout);
    if (watchdogIsReady_ || received != Received(Message{.kind = Message::Kind::ready})) {
        return received;
    }
    watchdogIsReady_ = true;
    return watchdog_->link().receive(timeout);
}

void WatchdogSupervisor::replaceWatchdog() {
    const std::unique_ptr<RunningWatchdog> former = std::move(watchdog_);
    if (!crashes_.add(setup_.now())) {
        startWatchdog();
    }
    // It may still run, without answering. Its successor knows by now what is off: at every
    // moment some watchdog has to.
    former->kill();
}

void WatchdogSupervisor::startWatchdog() {
    watchdogIsReady_ = false;
    do {
        watchdog_ = setup_.startWatchdog();
    } while (!watchdog_ && !crashes_.add(setup_.now()));
    if (!watchdog_) {
        return;
    }
    for (const DisplayID display : switchedOff_.displays()) {
        // If this one is gone already, the next receive tells.
        watchdog_->link().send({.kind = Message::Kind::alreadyOff, .display = display});
    }
}

}  // namespace tavrel::watchdog
