#include "watchdog/program/WatchdogService.h"

#include <algorithm>
#include <set>
#include <utility>
#include <variant>
#include <vector>

namespace tavrel::watchdog {
namespace {

std::set<DisplayID> listedDisplays(DisplayMoment& moment) {
    const auto all = moment.allDisplays();
    const auto listed = all ? *all : moment.onlineDisplays().value_or(std::vector<DisplayID>{});
    return {listed.begin(), listed.end()};
}

}  // namespace

WatchdogService::WatchdogService(DisplaySwitch& displays, DisplayQueries& queries,
                                 MessageChannel& application, Pause pause)
    : displays_(displays), queries_(queries), application_(application), pause_(std::move(pause)) {}

void WatchdogService::run() {
    // Another program may switch something off before the first heartbeat.
    look();
    // No `send` is checked: that the application is gone shows at the next receive.
    application_.send({.kind = Message::Kind::ready});
    converse();
    switchOnWhatIsLeft();
}

void WatchdogService::switchOnWhatIsLeft() {
    for (const DisplayID display : handedOver_.displays()) {
        switchedOff_.add(display);
    }
    insist(
        switchedOff_, [this](DisplayID display) { carryOut(display, true); }, pause_);
}

void WatchdogService::converse() {
    for (;;) {
        const Received received = awaitMessage();
        const auto* message = std::get_if<Message>(&received);
        if (message != nullptr && message->kind == Message::Kind::goodbye) {
            return;
        }
        if (message != nullptr && handle(*message)) {
            continue;
        }
        if (message != nullptr || std::get<NoMessage>(received) == NoMessage::malformed) {
            application_.hangUp();
        }
        return;
    }
}

Received WatchdogService::awaitMessage() {
    Received received = application_.receive(silenceLimit);
    while (received == Received(NoMessage::timedOut)) {
        switchOnIfNothingIsUsable();
        received = application_.receive(lookInterval);
    }
    return received;
}

bool WatchdogService::handle(const Message& message) {
    switch (message.kind) {
        case Message::Kind::alreadyOff:
            switchedOff_.add(message.display);
            return true;
        case Message::Kind::handOver:
            switchedOff_.remove(message.display);
            handedOver_.add(message.display);
            return true;
        case Message::Kind::switchOff:
        case Message::Kind::switchOn: {
            const bool enabled = message.kind == Message::Kind::switchOn;
            application_.send({.kind = Message::Kind::answer,
                               .id = message.id,
                               .status = carryOut(message.display, enabled)});
            return true;
        }
        case Message::Kind::heartbeat:
            look();
            return true;
        case Message::Kind::ready:
        case Message::Kind::answer:
        case Message::Kind::goodbye:
            break;
    }
    return false;
}

ServerStatus WatchdogService::carryOut(DisplayID display, bool enabled) {
    const ServerStatus status = displays_.setDisplayEnabled(display, enabled);
    if (enabled && (status == serverStatus::success || status == serverStatus::illegalArgument)) {
        handedOver_.remove(display);
    }
    seenOn_.erase(display);
    if (status == serverStatus::success && enabled) {
        switchedOff_.remove(display);
    } else if (!enabled &&
               (status == serverStatus::success || status == serverStatus::notImplemented)) {
        // Where the server didn't say, it may have done it. If not, two looks find that out.
        switchedOff_.add(display);
    }
    return status;
}

void WatchdogService::look() {
    const auto moment = queries_.now();
    seen_.merge(listedDisplays(*moment));
    leaveToOthers(*moment);
}

void WatchdogService::leaveToOthers(DisplayMoment& moment) {
    std::set<DisplayID> on;
    for (const DisplayID display : std::vector(switchedOff_.displays())) {
        if (!moment.isCurrent() || !moment.isActive(display)) {
            continue;
        }
        on.insert(display);
        if (seenOn_.contains(display)) {
            carryOut(display, true);
        }
    }
    seenOn_ = std::move(on);
}

void WatchdogService::switchOnIfNothingIsUsable() {
    const auto moment = queries_.now();
    // What the server said before it fell silent may no longer be true.
    if (!moment->isCurrent() || hasUsableDisplay(*moment) != false) {
        return;
    }
    seen_.merge(listedDisplays(*moment));
    std::vector<DisplayID> displays(seen_.begin(), seen_.end());
    std::stable_partition(displays.begin(), displays.end(),
                          [&](DisplayID display) { return moment->isBuiltIn(display); });
    for (const DisplayID display : displays) {
        if (!moment->isActive(display)) {
            carryOut(display, true);
        }
    }
}

}  // namespace tavrel::watchdog
