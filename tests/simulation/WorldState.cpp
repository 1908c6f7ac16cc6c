// What the future of a world depends on; see `World::state`.
//
// A closure in the main queue is described by its code when it holds nothing that changes what
// it does: only the controller or the model it belongs to, and for the debounced recovery the
// work item, whose life `WatchModel` follows. The verification of a restoration also holds
// displays and a message, but only the texts depend on these. Everything else needs an origin.
//
// Of several such closures with the same code that are due at the same moment, one is told: the
// second look finds what the first one left. That would not be so if a switch-off could end
// between the two, so all are told while a job sleeps; one that falls asleep later sleeps for
// longer than a look waits.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <iterator>
#include <string_view>

#include "tests/simulation/World.h"

namespace tavrel::simulation {

namespace {

using namespace std::chrono_literals;

/// Parts of the names that compilers give to the closures described by their code.
constexpr std::array<std::string_view, 5> openCode{
    "handleDisplayReconfiguration", "restoreSafeLayout", "asyncAfter", "queueTick", "WatchModel"};

bool tellsAll(const SimulatedScheduler::Pending& work) {
    return std::any_of(openCode.begin(), openCode.end(), [&](std::string_view part) {
        return work.code.find(part) != std::string::npos;
    });
}

std::string milliseconds(Delay time) {
    return std::to_string(time.count() / 1'000'000);
}

std::string text(const std::set<DisplayID>& displays) {
    std::string all;
    for (const DisplayID display : displays) {
        all += std::to_string(display) + ",";
    }
    return all;
}

}  // namespace

std::string WatchModel::state() const {
    const Delay now = system_.scheduler.now();
    std::string text;
    for (const auto& recovery : recoveries_) {
        if (recovery->due >= now && !recovery->isCancelled) {
            text += milliseconds(recovery->due - now) + (recovery == stored_ ? "s " : " ");
        }
    }
    return text;
}

std::string Invariants::state() {
    const Delay now = system_.scheduler.now();
    std::string text = " stored";
    // Not when it was last seen: a small world ends long before a display is forgotten.
    for (const auto& [display, lastSeenAt] : stored()) {
        text += " " + std::to_string(display);
    }
    text += storedIsOrWasEmptyNow() ? " empty" : "";
    if (unusableSince_.has_value()) {
        // More than a second is a violation, or a restoration is running and its end counts.
        const Delay age = now - std::max(*unusableSince_, lastRestorationEnd_);
        text += " unusable " + milliseconds(std::min<Delay>(age, 1001ms));
    }
    if (restorationStart_.has_value()) {
        std::set<DisplayID> left;
        std::set_difference(candidates_.begin(), candidates_.end(), enableRequests_.begin(),
                            enableRequests_.end(), std::inserter(left, left.end()));
        text += " restoring " + milliseconds(now - *restorationStart_) + " left " +
                simulation::text(left);
    }
    return text;
}

std::vector<std::uint64_t> World::workToDescribe() const {
    std::vector<std::uint64_t> numbers;
    for (const auto& work : system_.scheduler.pending()) {
        if (!tellsAll(work)) {
            numbers.push_back(work.number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::string World::state(const std::map<std::uint64_t, std::string>& origins) {
    std::string text = "desk";
    for (const SimulatedDisplay& display : system_.windowServer.desk()) {
        text += " " + std::to_string(display.id) + (display.connected ? "c" : "") +
                (display.enabled ? "e" : "");
    }
    text += fault_.has_value() ? " fault " + std::to_string(static_cast<int>(*fault_)) : "";
    text += " list";
    DisplayController& controller = first_.controller();
    for (const DisplayDevice& display : controller.displays()) {
        text += " " + display.id() + display.name() + (display.isOn ? "o" : "") +
                (display.isBusy ? "b" : "");
    }
    text += controller.isRefreshing() ? " refreshing" : "";
    text += controller.isAutomaticRecoveryRunning() ? " recovering" : "";
    const double suppression = controller.suppressTopologyRestoreUntil() - system_.wallClock.now();
    if (suppression > 0) {
        text += " suppressed " + std::to_string(std::lround(suppression * 1000));
    }
    text += first_.invariants().state() + " recoveries " + first_.watchModel().state() + " work";
    const bool nobodySleeps = system_.scheduler.pendingBackgroundJobs() == 0;
    std::set<std::string> told;
    for (const auto& work : system_.scheduler.pending()) {
        const std::string one = " +" + milliseconds(work.due - now()) +
                                (tellsAll(work) ? work.code : origins.at(work.number));
        const bool isFirst = told.insert(one).second;
        text += isFirst || !nobodySleeps ? one : "";
    }
    return text;
}

}  // namespace tavrel::simulation
