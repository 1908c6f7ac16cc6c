#include "watchdog/application/WatchdogSupervisor.h"

#include <algorithm>
#include <utility>

#include "watchdog/protocol/UsableDisplay.h"

namespace tavrel::watchdog {
namespace {

/// How often it is checked whether waiting for an answer still makes sense.
constexpr std::chrono::milliseconds checkInterval{500};

/// A server that answers questions within this time is not busy with a change of the layout.
constexpr std::chrono::seconds promptAnswer{1};

}  // namespace

WatchdogSupervisor::WatchdogSupervisor(DisplaySwitch& inner, DisplayQueries& queries,
                                       SupervisorSetup setup)
    : inner_(inner), queries_(queries), setup_(std::move(setup)) {
    startWatchdogIfDue();
}

ServerStatus WatchdogSupervisor::setDisplayEnabled(DisplayID display, bool enabled) {
    return enabled ? switchOn(display) : switchOff(display);
}

void WatchdogSupervisor::beat() {
    startWatchdogIfDue();
    // One that has long stopped reading is no use when it is needed.
    if (watchdog_ && !watchdog_->link().send({.kind = Message::Kind::heartbeat})) {
        replaceWatchdog();
    }
    if (switchedOff_.isInDoubt()) {
        switchedOff_.settle(*queries_.now());
    }
}

void WatchdogSupervisor::goodbye() {
    if (hasEnded_) {
        return;
    }
    bringBackWhatIsOff();
    hasEnded_ = true;
    if (watchdog_ && switchedOff_.isEmpty() && refused_.isEmpty()) {
        watchdog_->dismiss();
    }
    watchdog_.reset();
}

void WatchdogSupervisor::bringBackWhatIsOff() {
    SwitchedOff off = refused_;
    for (const DisplayID display : switchedOff_.displays()) {
        off.add(display);
    }
    const auto tryAgain = [&](DisplayID display) {
        const ServerStatus status = switchOn(display);
        if (status == serverStatus::illegalArgument) {
            // Unplugged: nobody misses it, and nobody could switch it on.
            switchedOff_.remove(display);
        }
        if (status == serverStatus::success || status == serverStatus::illegalArgument) {
            off.remove(display);
        }
    };
    insist(off, tryAgain, setup_.pause);
}

void WatchdogSupervisor::replaceIfDead() {
    if (watchdog_ && receive(std::chrono::milliseconds::zero()) != Received(NoMessage::timedOut)) {
        replaceWatchdog();
    }
}

ServerStatus WatchdogSupervisor::switchOn(DisplayID display) {
    Answer answer = NoAnswer::died;
    // Bounded, also for watchdogs that crash too slowly for the detector.
    for (std::size_t crashes = 0;
         watchdog_ && answer == Answer(NoAnswer::died) && crashes < CrashLoopDetector::tooMany;
         ++crashes) {
        answer = ask(display, true);
        if (std::holds_alternative<NoAnswer>(answer)) {
            replaceWatchdog();
        }
    }
    const auto* answered = std::get_if<ServerStatus>(&answer);
    const ServerStatus status =
        answered != nullptr ? *answered : inner_.setDisplayEnabled(display, true);
    if (status == serverStatus::success) {
        switchedOff_.remove(display);
    }
    if (status == serverStatus::success || status == serverStatus::illegalArgument) {
        refused_.remove(display);
    } else {
        refused_.add(display);
    }
    return status;
}

ServerStatus WatchdogSupervisor::switchOff(DisplayID display) {
    const bool wasOff = switchedOff_.contains(display);
    // Beforehand, so that the next watchdog is told of it if this one dies.
    switchedOff_.add(display);
    const Answer answer =
        watchdog_ ? ask(display, false) : Answer(inner_.setDisplayEnabled(display, false));
    const auto* status = std::get_if<ServerStatus>(&answer);
    if (status == nullptr) {
        replaceWatchdog();
        switchOn(display);
        return serverStatus::cannotComplete;
    }
    if (*status != serverStatus::success && !wasOff) {
        switchedOff_.remove(display);
    }
    if (*status == serverStatus::notImplemented) {
        switchedOff_.addInDoubt(display);
    }
    return *status;
}

WatchdogSupervisor::Answer WatchdogSupervisor::ask(DisplayID display, bool enabled) {
    lastId_ = std::max(lastId_ + 1, 1U);
    if (!watchdog_->link().send(
            {.kind = enabled ? Message::Kind::switchOn : Message::Kind::switchOff,
             .id = lastId_,
             .display = display})) {
        return NoAnswer::died;
    }
    const Received received = awaitAnswer();
    const auto* message = std::get_if<Message>(&received);
    if (message != nullptr && message->kind == Message::Kind::answer && message->id == lastId_) {
        return message->status;
    }
    return received == Received(NoMessage::timedOut) ? NoAnswer::hung : NoAnswer::died;
}

Received WatchdogSupervisor::awaitAnswer() {
    const auto deadline = std::chrono::steady_clock::now() + setup_.answerTimeout;
    Received received = receive(std::min(setup_.urgentTimeout, setup_.answerTimeout));
    while (received == Received(NoMessage::timedOut) &&
           std::chrono::steady_clock::now() < deadline && !isWaitingPointless()) {
        received = receive(checkInterval);
    }
    return received;
}

bool WatchdogSupervisor::isWaitingPointless() {
    const auto asked = std::chrono::steady_clock::now();
    const auto moment = queries_.now();
    const std::optional<bool> isUsable = hasUsableDisplay(*moment);
    // While the watchdog makes a change, the server answers nobody else. It may be slow then,
    // but is nobody whose work another could do better.
    const bool isPrompt = std::chrono::steady_clock::now() - asked <= promptAnswer;
    return isPrompt && isUsable.has_value() && (isUrgent_ || !*isUsable);
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
    schedule_.noteCrash(setup_.now());
    startWatchdogIfDue();
    // It may still run, without answering. Its successor knows by now what is off: at every
    // moment some watchdog has to.
    former->kill();
}

void WatchdogSupervisor::startWatchdogIfDue() {
    if (watchdog_ || hasEnded_ || !schedule_.isDue(setup_.now())) {
        return;
    }
    watchdogIsReady_ = false;
    watchdog_ = setup_.startWatchdog();
    if (!watchdog_) {
        schedule_.noteRefusal(setup_.now());
        return;
    }
    schedule_.noteStart();
    for (const DisplayID display : switchedOff_.displays()) {
        // If this one is gone already, the next receive tells.
        watchdog_->link().send({.kind = Message::Kind::alreadyOff, .display = display});
    }
}

}  // namespace tavrel::watchdog
