#include "watchdog/application/WatchdogSupervisor.h"

#include <algorithm>
#include <utility>
#include <variant>

namespace tavrel::watchdog {

WatchdogSupervisor::WatchdogSupervisor(DisplaySwitch& inner, SupervisorSetup surroundings)
    : inner_(inner), surroundings_(std::move(surroundings)) {
    startWatchdog();
}

ServerStatus WatchdogSupervisor::setDisplayEnabled(DisplayID display, bool enabled) {
    return enabled ? switchOn(display) : switchOff(display);
}

void WatchdogSupervisor::goodbye() {
    if (guard_) {
        guard_->link().send({.kind = Message::Kind::goodbye});
        guard_.reset();
    }
}

void WatchdogSupervisor::attend() {
    if (guard_ && receive(std::chrono::milliseconds::zero()) != Received(NoMessage::timedOut)) {
        replaceGuard();
    }
}

ServerStatus WatchdogSupervisor::switchOn(DisplayID display) {
    std::optional<ServerStatus> status;
    // Guards that die too slowly to count as unable to live must not keep us forever.
    for (std::size_t died = 0; guard_ && !status && died < CrashLoopDetector::tooMany; ++died) {
        status = ask(display, true);
        if (!status) {
            replaceGuard();
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
    // Beforehand, so that the next guard hears of it whatever becomes of this one.
    switchedOff_.add(display);
    const std::optional<ServerStatus> status =
        guard_ ? ask(display, false) : inner_.setDisplayEnabled(display, false);
    if (!status) {
        replaceGuard();
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
    if (!guard_->link().send({.kind = enabled ? Message::Kind::switchOn : Message::Kind::switchOff,
                              .id = lastId_,
                              .display = display})) {
        return std::nullopt;
    }
    const Received received = receive(surroundings_.patience);
    const auto* message = std::get_if<Message>(&received);
    if (message == nullptr || message->kind != Message::Kind::answer || message->id != lastId_) {
        return std::nullopt;
    }
    return message->status;
}

Received WatchdogSupervisor::receive(std::chrono::milliseconds patience) {
    const Received received = guard_->link().receive(patience);
    if (guardIsReady_ || received != Received(Message{.kind = Message::Kind::ready})) {
        return received;
    }
    guardIsReady_ = true;
    return guard_->link().receive(patience);
}

void WatchdogSupervisor::replaceGuard() {
    const std::unique_ptr<RunningWatchdog> former = std::move(guard_);
    if (!deaths_.add(surroundings_.now())) {
        startWatchdog();
    }
    // It may live on, having only gone silent. Not before its successor knows what is off:
    // at every moment some guard has to.
    former->kill();
}

void WatchdogSupervisor::startWatchdog() {
    guardIsReady_ = false;
    do {
        guard_ = surroundings_.startWatchdog();
    } while (!guard_ && !deaths_.add(surroundings_.now()));
    if (!guard_) {
        return;
    }
    for (const DisplayID display : switchedOff_.displays()) {
        // If this one is gone already, it shows at the next look.
        guard_->link().send({.kind = Message::Kind::alreadyOff, .display = display});
    }
}

}  // namespace tavrel::watchdog
