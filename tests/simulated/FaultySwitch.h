#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
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
        /// How many of 100 switches that take place are answered with 1006, as if the server had
        /// been given up before it answered.
        unsigned lateAnswers = 0;
    };

    /// Both must outlive it.
    FaultySwitch(DisplaySwitch& inner, SimulatedScheduler& scheduler, std::uint64_t seed)
        : inner_(inner), scheduler_(scheduler), chance_(seed) {}

    void setFaults(const Faults& faults) {
        faults_ = faults;
        ++faultsSet_;
    }

    /// From now on the server does nothing for anybody, or goes on.
    void setSilent(bool isSilent) { isSilent_ = isSilent; }

    /// Blocks the calling job until the server does something again, but no longer than it is
    /// given. Returns whether it does.
    bool awaitServer() {
        constexpr std::chrono::milliseconds timeout{25'000};
        for (auto left = timeout; left.count() > 0 && isSilent_; left -= piece) {
            scheduler_.sleep(piece);
        }
        return !isSilent_;
    }

    /// How many requests to switch on have been refused so far.
    std::uint64_t refusedWakes() const { return refusedWakes_; }

    bool canSwitch() override { return inner_.canSwitch(); }

    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        takeTime();
        if (!awaitServer()) {
            refusedWakes_ += enabled ? 1 : 0;
            return serverStatus::notImplemented;
        }
        if (chance_.happens(faults_.refusals)) {
            refusedWakes_ += enabled ? 1 : 0;
            return serverStatus::cannotComplete;
        }
        const ServerStatus status = inner_.setDisplayEnabled(display, enabled);
        takeTime();
        return chance_.happens(faults_.lateAnswers) ? serverStatus::notImplemented : status;
    }

private:
    static constexpr std::chrono::milliseconds piece{500};

    void takeTime() {
        auto time = faults_.delay;
        if (faults_.latency.count() > 0) {
            time += chance_.upTo(faults_.latency);
        }
        // In pieces: once faults stop, a slow server goes on.
        const auto faults = faultsSet_;
        for (; time.count() > 0 && faults == faultsSet_; time -= piece) {
            scheduler_.sleep(std::min(time, piece));
        }
    }

    DisplaySwitch& inner_;
    SimulatedScheduler& scheduler_;
    Chance chance_;
    Faults faults_;
    unsigned faultsSet_ = 0;
    bool isSilent_ = false;
    std::uint64_t refusedWakes_ = 0;
};

}  // namespace tavrel
