#include "watchdog/application/WatchdogSupervisor.h"

#include <algorithm>
#include <utility>

namespace tavrel::watchdog {
namespace {

/// How often it is checked whether waiting for an answer still makes sense.
constexpr std::chrono::milliseconds checkInterval{500};

/// A server that answers questions within this time is not busy with a change of the layout.
constexpr std::chrono::seconds promptAnswer{1};

}  // namespace

WatchdogSupervisor::WatchdogSupervisor(DisplaySwitch& inner, DisplayQueries& queries,
                                       SupervisorSetup setup)
    : inner_(inner), queries_(queries), setup_(std::move(setup)) {}

ServerStatus WatchdogSupervisor::setDisplayEnabled(DisplayID display, bool enabled) {
    const ServerStatus status = enabled ? switchOn(display) : switchOff(display);
    isInDoubt_ = switchedOff_.isInDoubt();
    ++changesEnded_;
    return status;
}

void WatchdogSupervisor::beat() {
    startWatchdogIfDue();
    // One that has long stopped reading is no use when it is needed.
    if (watchdog_ && !watchdog_->link().send({.kind = Message::Kind::heartbeat})) {
        replaceWatchdog();
    }
    if (switchedOff_.isInDoubt()) {
        switchedOff_.settle(*queries_.now());
        isInDoubt_ = switchedOff_.isInDoubt();
    }
}

bool WatchdogSupervisor::passBeatOn() {
    const std::lock_guard lock(handOverMutex_);
    return !isInDoubt_ && watchdog_ && watchdog_->link().send({.kind = Message::Kind::heartbeat});
}

void WatchdogSupervisor::goodbye() {
    if (hasEnded_) {
        return;
    }
    bringBackWhatIsLeft();
    hasEnded_ = true;
    const SwitchedOff stillLeft = left();
    handOver(stillLeft.displays());
    if (watchdog_ && stillLeft.isEmpty()) {
        watchdog_->dismiss();
    }
    // It has been told, whether or not it is still waited for.
    const auto ending = takeWatchdog();
}

SwitchedOff WatchdogSupervisor::left() const {
    SwitchedOff left = refused_;
    for (const DisplayID display : switchedOff_.displays()) {
        left.add(display);
    }
    const std::lock_guard lock(handOverMutex_);
    for (const DisplayID display : handedOver_.displays()) {
        left.add(display);
    }
    return left;
}

void WatchdogSupervisor::bringBackWhatIsLeft() {
    SwitchedOff off = left();
    const auto tryAgain = [&](DisplayID display) {
        const ServerStatus status = switchOn(display);
        ++changesEnded_;
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

void WatchdogSupervisor::handOver(const std::vector<DisplayID>& displays) {
    const std::lock_guard lock(handOverMutex_);
    for (const DisplayID display : displays) {
        handedOver_.add(display);
    }
    tellWhatIsHandedOver();
}

bool WatchdogSupervisor::isHandedOver() const {
    const std::lock_guard lock(handOverMutex_);
    return isTold_;
}

void WatchdogSupervisor::tellWhatIsHandedOver() {
    const auto& displays = handedOver_.displays();
    isTold_ =
        watchdog_ && std::all_of(displays.begin(), displays.end(), [&](DisplayID display) {
            return watchdog_->link().send({.kind = Message::Kind::handOver, .display = display});
        });
}

std::unique_ptr<RunningWatchdog> WatchdogSupervisor::takeWatchdog() {
    const std::lock_guard lock(handOverMutex_);
    return std::move(watchdog_);
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
        const std::lock_guard lock(handOverMutex_);
        handedOver_.remove(display);
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
    const auto deadline = setup_.stopwatch() + setup_.answerTimeout;
    Received received = receive(std::min(setup_.urgentTimeout, setup_.answerTimeout));
    while (received == Received(NoMessage::timedOut) && setup_.stopwatch() < deadline &&
           !isWaitingPointless()) {
        received = receive(checkInterval);
    }
    return received;
}

bool WatchdogSupervisor::isWaitingPointless() {
    const auto asked = setup_.stopwatch();
    const auto moment = queries_.now();
    // What the server said before it fell silent may no longer be true.
    const std::optional<bool> isUsable =
        moment->isCurrent() ? hasUsableDisplay(*moment) : std::nullopt;
    // While the watchdog makes a change, the server answers nobody else. It may be slow then,
    // but is nobody whose work another could do better.
    const bool isPrompt = setup_.stopwatch() - asked <= promptAnswer;
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
    const std::unique_ptr<RunningWatchdog> former = takeWatchdog();
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
    std::vector<Message> first;
    for (const DisplayID display : switchedOff_.displays()) {
        first.push_back({.kind = Message::Kind::alreadyOff, .display = display});
    }
    auto started = setup_.startWatchdog(first);
    const bool isRefused = started == nullptr;
    {
        const std::lock_guard lock(handOverMutex_);
        watchdog_ = std::move(started);
        tellWhatIsHandedOver();
    }
    if (isRefused) {
        schedule_.noteRefusal(setup_.now());
    } else {
        schedule_.noteStart();
    }
}

}  // namespace tavrel::watchdog
