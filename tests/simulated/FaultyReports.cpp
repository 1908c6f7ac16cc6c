#include "tests/simulated/FaultyReports.h"

namespace tavrel {

FaultyReports::FaultyReports(ReconfigurationReports& inner, SimulatedScheduler& scheduler,
                             std::uint64_t seed)
    : inner_(inner), scheduler_(scheduler), chance_(seed) {
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
    if (self.chance_.happens(self.faults_.lost)) {
        return;
    }
    self.passOn(display, flags);
    if (self.chance_.happens(self.faults_.doubled)) {
        self.passOn(display, flags);
    }
}

void FaultyReports::passOn(DisplayID display, std::uint32_t flags) {
    if (!chance_.happens(faults_.late)) {
        deliver(display, flags);
        return;
    }
    const std::chrono::milliseconds delay = chance_.upTo(faults_.delay);
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
