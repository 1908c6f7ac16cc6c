#include "watchdog/program/WatchdogService.h"

#include <utility>
#include <variant>
#include <vector>

namespace tavrel::watchdog {

WatchdogService::WatchdogService(DisplaySwitch& displays, MessageChannel& application, Pause pause)
    : displays_(displays), application_(application), pause_(std::move(pause)) {}

void WatchdogService::run() {
    // No `send` is checked: that the application is gone shows at the next receive.
    application_.send({.kind = Message::Kind::ready});
    if (converse() == Ending::gone) {
        switchAllOn();
    }
}

WatchdogService::Ending WatchdogService::converse() {
    for (;;) {
        const Received received = application_.receive();
        const auto* message = std::get_if<Message>(&received);
        if (message != nullptr && message->kind == Message::Kind::goodbye) {
            return Ending::goodbye;
        }
        if (message != nullptr && handle(*message)) {
            continue;
        }
        if (message != nullptr || std::get<NoMessage>(received) == NoMessage::malformed) {
            application_.hangUp();
        }
        return Ending::gone;
    }
}

bool WatchdogService::handle(const Message& message) {
    switch (message.kind) {
        case Message::Kind::alreadyOff:
            switchedOff_.add(message.display);
            return true;
        case Message::Kind::switchOff:
        case Message::Kind::switchOn: {
            const bool enabled = message.kind == Message::Kind::switchOn;
            application_.send({.kind = Message::Kind::answer,
                               .id = message.id,
                               .status = carryOut(message.display, enabled)});
            return true;
        }
        case Message::Kind::ready:
        case Message::Kind::answer:
        case Message::Kind::goodbye:
            break;
    }
    return false;
}

ServerStatus WatchdogService::carryOut(DisplayID display, bool enabled) {
    const ServerStatus status = displays_.setDisplayEnabled(display, enabled);
    if (status != serverStatus::success) {
        return status;
    }
    if (enabled) {
        switchedOff_.remove(display);
    } else {
        switchedOff_.add(display);
    }
    return status;
}

void WatchdogService::switchAllOn() {
    for (int attempt = 0; attempt < attempts && !switchedOff_.displays().empty(); ++attempt) {
        if (attempt > 0) {
            pause_(retryInterval);
        }
        // The last one off is the first one on, so that each finds the layout it left.
        const std::vector<DisplayID> displays(switchedOff_.displays().rbegin(),
                                              switchedOff_.displays().rend());
        for (const DisplayID display : displays) {
            carryOut(display, true);
        }
    }
}

}  // namespace tavrel::watchdog
