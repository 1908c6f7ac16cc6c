#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <utility>

#include "platform/DisplaySwitch.h"
#include "tests/simulated/Chance.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A fault decorator: switches are refused or slow, at random.
class FaultySwitch : public DisplaySwitch {
public:
    struct Faults {
        /// How many of 100 switches are refused.
        unsigned refusals = 0;
        /// Each switch takes up to this long, before its effect and again after it.
        std::chrono::milliseconds latency{0};
        /// And this long on top.
        std::chrono::milliseconds delay{0};
    };

    /// Both must outlive it.
    FaultySwitch(DisplaySwitch& inner, SimulatedScheduler& scheduler, std::uint64_t seed)
        : inner_(inner), scheduler_(scheduler), chance_(seed) {}

    void setFaults(const Faults& faults) { faults_ = faults; }

    /// From now on `observer` is called at each request to switch a display on.
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
        if (chance_.happens(faults_.refusals)) {
            refusedWakes_ += enabled ? 1 : 0;
            return serverStatus::cannotComplete;
        }
        const ServerStatus status = inner_.setDisplayEnabled(display, enabled);
        takeTime();
        return status;
    }

private:
    void takeTime() {
        auto time = faults_.delay;
        if (faults_.latency.count() > 0) {
            time += chance_.upTo(faults_.latency);
        }
        if (time.count() > 0) {
            scheduler_.sleep(time);
        }
    }

    DisplaySwitch& inner_;
    SimulatedScheduler& scheduler_;
    Chance chance_;
    Faults faults_;
    std::function<void(DisplayID)> wakeObserver_;
    std::uint64_t refusedWakes_ = 0;
};

}  // namespace tavrel
