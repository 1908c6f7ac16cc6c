#include "tests/simulated/FaultyReports.h"

namespace tavrel {

FaultyReports::FaultyReports(ReconfigurationReports& inner, SimulatedScheduler& scheduler,
                             std::uint64_t seed)
    : inner_(inner), scheduler_(scheduler), random_(seed) {
    inner_.registerCallback(receive, this);
}

FaultyReports::~FaultyReports() {
    inner_.removeCallback(receive, this);
}

ServerStatus FaultyReports::registerCallback(DisplayReconfigurationCallback callback,
                                             void* userInfo) {
    callbacks_.emplace_back(callback, userInfo);
    return serverStatus::success;
}

ServerStatus FaultyReports::removeCallback(DisplayReconfigurationCallback callback,
                                           void* userInfo) {
    std::erase(callbacks_, std::pair(callback, userInfo));
    return serverStatus::success;
}

void FaultyReports::receive(DisplayID display, std::uint32_t flags, void* userInfo) {
    auto& self = *static_cast<FaultyReports*>(userInfo);
    if (self.happens(self.faults_.lost)) {
        return;
    }
    self.passOn(display, flags);
    if (self.happens(self.faults_.doubled)) {
        self.passOn(display, flags);
    }
}

bool FaultyReports::happens(unsigned outOfHundred) {
    return outOfHundred != 0 && random_() % 100 < outOfHundred;
}

void FaultyReports::passOn(DisplayID display, std::uint32_t flags) {
    if (!happens(faults_.late)) {
        deliver(display, flags);
        return;
    }
    const std::chrono::milliseconds delay(random_() %
                                          static_cast<std::uint64_t>(faults_.delay.count() + 1));
    scheduler_.backgroundQueue().async([this, display, flags, delay] {
        scheduler_.sleep(delay);
        deliver(display, flags);
    });
}

void FaultyReports::deliver(DisplayID display, std::uint32_t flags) {
    const auto callbacks = callbacks_;
    for (const auto& [callback, userInfo] : callbacks) {
        callback(display, flags, userInfo);
    }
}

}  // namespace tavrel
