#include "tests/simulation/GuardedLine.h"

#include <algorithm>

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;

constexpr auto longestWait = 2s;
constexpr std::chrono::milliseconds waitedAtOnce{100};
/// Longer than all that can be before somebody. Also ends the wait when time no longer passes.
constexpr int longestLine = 36'000;

}  // namespace

GuardedLine::GuardedLine(DisplaySwitch& inner, DisplayQueries& queries,
                         SimulatedScheduler& scheduler)
    : inner_(inner),
      scheduler_(scheduler),
      supervisor_(inner, queries,
                  {.startWatchdog =
                       [this](const auto& first) {
                           stop_ = std::make_shared<Stop>(Stop::nowhere);
                           auto helper = std::make_unique<SimulatedHelper>(
                               inner_, [this](auto time) { wait(time); }, stop_);
                           sendAll(helper->link(), first);
                           return helper;
                       },
                   .now = [this] { return now(); },
                   .stopwatch = [this] { return now(); },
                   .pause = [this](auto time) { wait(time); },
                   .urgentTimeout = longestWait}) {
    supervisor_.start();
}

void GuardedLine::wait(std::chrono::milliseconds time) {
    const Delay before = scheduler_.now();
    scheduler_.sleep(time);
    if (scheduler_.now() == before) {
        waitedInVain_ += time;
    }
}

ServerStatus GuardedLine::setDisplayEnabled(DisplayID display, bool enabled) {
    return enabled ? switchOn(display) : switchOff(display);
}

ServerStatus GuardedLine::switchOff(DisplayID display) {
    const Place place = queueUp(0);
    awaitTurn(place);
    if (isRescued(display)) {
        std::erase(waiting_, place);
        return serverStatus::cannotComplete;
    }
    const ServerStatus status = carryOut(place, display, false);
    return isRescued(display) ? serverStatus::cannotComplete : status;
}

ServerStatus GuardedLine::switchOn(DisplayID display) {
    const Place place = queueUp(display);
    const Delay asked = now();
    while (!isNext(place)) {
        if (now() - busySince_.value_or(asked) >= longestWait) {
            place->isOvertaking = true;
            scheduler_.backgroundQueue().async([this, place, display] {
                awaitTurn(place);
                carryOut(place, display, true);
            });
            return inner_.setDisplayEnabled(display, true);
        }
        wait(waitedAtOnce);
    }
    return carryOut(place, display, true);
}

ServerStatus GuardedLine::carryOut(const Place& place, DisplayID display, bool enabled) {
    std::erase(waiting_, place);
    if (busySince_.has_value()) {
        // The world ends: no time passes any more, and who is before this one stays there.
        return serverStatus::cannotComplete;
    }
    busySince_ = now();
    if (now() - lastBeat_ >= 1s) {
        lastBeat_ = now();
        supervisor_.beat();
    }
    const ServerStatus status = supervisor_.setDisplayEnabled(display, enabled);
    busySince_.reset();
    return status;
}

GuardedLine::Place GuardedLine::queueUp(DisplayID rescued) {
    waiting_.push_back(std::make_shared<Request>(Request{.rescued = rescued}));
    return waiting_.back();
}

bool GuardedLine::isNext(const Place& place) const {
    return !busySince_.has_value() && waiting_.front() == place;
}

void GuardedLine::awaitTurn(const Place& place) {
    for (int waited = 0; !isNext(place) && waited < longestLine; ++waited) {
        wait(waitedAtOnce);
    }
}

bool GuardedLine::isRescued(DisplayID display) const {
    return std::any_of(waiting_.begin(), waiting_.end(), [&](const Place& each) {
        return each->isOvertaking && each->rescued == display;
    });
}

}  // namespace tavrel::simulation
