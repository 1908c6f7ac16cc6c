#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <random>
#include <utility>

#include "platform/DisplaySwitch.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A fault decorator: switches fail or take their time, by chance drawn from a seed.
class FaultySwitch : public DisplaySwitch {
public:
    struct Faults {
        /// Out of 100 switches, how many are refused.
        unsigned refusals = 0;
        /// Each switch takes up to this long, before its effect and again after it.
        std::chrono::milliseconds latency{0};
    };

    /// Both must outlive it.
    FaultySwitch(DisplaySwitch& inner, SimulatedScheduler& scheduler, std::uint64_t seed)
        : inner_(inner), scheduler_(scheduler), random_(seed) {}

    void setFaults(const Faults& faults) { faults_ = faults; }

    /// From now on `observer` is told of each request to switch a display on.
    void setWakeObserver(std::function<void(DisplayID)> observer) {
        wakeObserver_ = std::move(observer);
    }

    /// How many requests to switch on have been refused so far.
    std::uint64_t refusedWakes() const { return refusedWakes_; }

    bool canSwitch() override { return inner_.canSwitch(); }

    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (enabled && wakeObserver_ != nullptr) {
            wakeObserver_(display);
        }
        takeTime();
        if (happens(faults_.refusals)) {
            refusedWakes_ += enabled ? 1 : 0;
            return serverStatus::cannotComplete;
        }
        const ServerStatus status = inner_.setDisplayEnabled(display, enabled);
        takeTime();
        return status;
    }

private:
    bool happens(unsigned outOfHundred) {
        return outOfHundred != 0 && random_() % 100 < outOfHundred;
    }

    void takeTime() {
        if (faults_.latency.count() > 0) {
            scheduler_.sleep(std::chrono::milliseconds(
                random_() % static_cast<std::uint64_t>(faults_.latency.count() + 1)));
        }
    }

    DisplaySwitch& inner_;
    SimulatedScheduler& scheduler_;
    std::mt19937_64 random_;
    Faults faults_;
    std::function<void(DisplayID)> wakeObserver_;
    std::uint64_t refusedWakes_ = 0;
};

}  // namespace tavrel
