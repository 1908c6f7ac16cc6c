#include "tests/simulation/SimulatedHelper.h"

#include <algorithm>
#include <utility>

#include "watchdog/protocol/SwitchedOff.h"

namespace tavrel::simulation {

namespace {

using watchdog::Message;
using watchdog::NoMessage;

/// How soon it is noticed that a process goes on.
constexpr std::chrono::milliseconds pieceOfTimeout{250};

}  // namespace

bool SimulatedHelper::send(const Message& message) {
    if (!isGone_) {
        unread_.push_back(message);
    }
    return !isGone_;
}

watchdog::Received SimulatedHelper::receive(std::chrono::milliseconds timeout) {
    if (*stop_ == Stop::beforeItAnswers) {
        serveAll();
    }
    for (auto left = timeout; *stop_ != Stop::nowhere && left.count() > 0; left -= pieceOfTimeout) {
        wait_(std::min(left, pieceOfTimeout));
    }
    if (*stop_ == Stop::nowhere) {
        serveAll();
    }
    if (isGone_) {
        return NoMessage::gone;
    }
    if (*stop_ != Stop::nowhere || said_.empty()) {
        return NoMessage::timedOut;
    }
    const Message next = said_.front();
    said_.pop_front();
    return next;
}

void SimulatedHelper::serveAll() {
    while (!isGone_ && !unread_.empty()) {
        const Message next = unread_.front();
        unread_.pop_front();
        serve(next);
    }
}

void SimulatedHelper::serve(const Message& message) {
    switch (message.kind) {
        case Message::Kind::alreadyOff:
        case Message::Kind::handOver:
            return switchedOff_.add(message.display);
        case Message::Kind::switchOff:
        case Message::Kind::switchOn: {
            const bool enabled = message.kind == Message::Kind::switchOn;
            const ServerStatus status = carryOut(message.display, enabled);
            return said_.push_back(
                {.kind = Message::Kind::answer, .id = message.id, .status = status});
        }
        default:
            return;
    }
}

ServerStatus SimulatedHelper::carryOut(DisplayID display, bool enabled) {
    const ServerStatus status = displays_.setDisplayEnabled(display, enabled);
    const bool isDone = status == serverStatus::success || status == serverStatus::illegalArgument;
    if (enabled && isDone) {
        switchedOff_.remove(display);
    } else if (!enabled &&
               (status == serverStatus::success || status == serverStatus::notImplemented)) {
        switchedOff_.add(display);
    }
    return status;
}

void SimulatedHelper::endByItself() {
    if (*stop_ == Stop::nowhere) {
        serveAll();
    }
    if (!std::exchange(isGone_, true) && *stop_ == Stop::nowhere) {
        watchdog::insist(
            switchedOff_, [this](DisplayID display) { carryOut(display, true); }, wait_);
    }
}

}  // namespace tavrel::simulation
