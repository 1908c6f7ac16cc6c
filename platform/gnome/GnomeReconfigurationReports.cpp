#include "platform/gnome/GnomeReconfigurationReports.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <string>
#include <utility>

#include "platform/layout/LayoutDiff.h"

namespace tavrel {

namespace {

constexpr std::chrono::milliseconds reconnectInterval{2000};

void sleep(const WakeUp& wakeUp, int descriptor, int events, std::chrono::milliseconds timeout) {
    std::array<pollfd, 2> sources{
        {{wakeUp.descriptor(), POLLIN, 0}, {descriptor, static_cast<short>(events), 0}}};
    ::poll(sources.data(), sources.size(), static_cast<int>(timeout.count()));
    wakeUp.drain();
}

}  // namespace

GnomeReconfigurationReports::GnomeReconfigurationReports(UserDefaults& store, GnomeOptions options)
    : options_(std::move(options)), directory_(store), thread_([this] { run(); }) {}

GnomeReconfigurationReports::~GnomeReconfigurationReports() {
    isStopping_ = true;
    wakeUp_.wake();
    thread_.join();
}

ServerStatus GnomeReconfigurationReports::registerCallback(DisplayReconfigurationCallback callback,
                                                           void* userInfo) {
    return registration_.add(callback, userInfo);
}

ServerStatus GnomeReconfigurationReports::removeCallback(DisplayReconfigurationCallback callback,
                                                         void* userInfo) {
    return registration_.remove(callback, userInfo);
}

void GnomeReconfigurationReports::run() {
    while (!isStopping_) {
        converse();
        if (!isStopping_) {
            sleep(wakeUp_, -1, 0, reconnectInterval);
        }
    }
}

void GnomeReconfigurationReports::converse() {
    const dbus::Bus bus = dbus::openBus(options_.busAddress);
    if (bus == nullptr) {
        return;
    }
    const std::string service = gnome::service;
    const std::string says = "type='signal',sender='" + service + "',interface='" +
                             gnome::interface + "',member='MonitorsChanged'";
    for (const std::string& match : {says, dbus::ownerChanges(service)}) {
        dbus::addMatch(*bus, match, &changed, this);
    }
    // What changed while there was no connection is news too.
    hasNews_ = true;
    isAsking_ = false;
    while (!isStopping_) {
        const int handled = sd_bus_process(bus.get(), nullptr);
        if (handled < 0) {
            return;
        }
        if (handled == 0) {
            ask(bus.get());
            wait(bus.get());
        }
    }
}

void GnomeReconfigurationReports::ask(sd_bus* bus) {
    if (!hasNews_ || isAsking_) {
        return;
    }
    hasNews_ = false;
    const dbus::Message question = gnome::stateQuestion(*bus);
    const auto timeout = std::chrono::microseconds(options_.timeout).count();
    isAsking_ =
        question != nullptr && sd_bus_call_async(bus, nullptr, question.get(), &answered, this,
                                                 static_cast<std::uint64_t>(timeout)) >= 0;
}

void GnomeReconfigurationReports::wait(sd_bus* bus) {
    using std::chrono::microseconds;
    using std::chrono::milliseconds;
    using std::chrono::steady_clock;
    milliseconds timeout{-1};
    std::uint64_t until = UINT64_MAX;
    if (sd_bus_get_timeout(bus, &until) > 0 && until != UINT64_MAX) {
        // The library counts on the clock that steady_clock is here.
        const steady_clock::time_point due(microseconds(static_cast<std::int64_t>(until)));
        timeout =
            std::max(std::chrono::ceil<milliseconds>(due - steady_clock::now()), milliseconds(0));
    }
    sleep(wakeUp_, sd_bus_get_fd(bus), std::max(sd_bus_get_events(bus), 0), timeout);
}

void GnomeReconfigurationReports::take(sd_bus_message* answer) {
    auto state = gnome::readState(answer);
    if (!state.has_value()) {
        return;
    }
    state->known = directory_.meet(gnome::identitiesIn(*state));
    const auto before = std::exchange(reported_, gnome::layoutOf(*state));
    if (!before.has_value()) {
        return;
    }
    for (const auto& change : layout::reportsBetween(*before, *reported_)) {
        registration_.report(change.display, change.flags);
    }
}

int GnomeReconfigurationReports::changed(sd_bus_message* /*message*/, void* self,
                                         sd_bus_error* /*error*/) {
    static_cast<GnomeReconfigurationReports*>(self)->hasNews_ = true;
    return 0;
}

int GnomeReconfigurationReports::answered(sd_bus_message* message, void* self,
                                          sd_bus_error* /*error*/) {
    auto& reports = *static_cast<GnomeReconfigurationReports*>(self);
    reports.isAsking_ = false;
    if (sd_bus_message_is_method_error(message, nullptr) <= 0) {
        reports.take(message);
    }
    return 0;
}

}  // namespace tavrel
