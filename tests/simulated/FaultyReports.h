#pragma once

#include <chrono>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

#include "platform/ReconfigurationReports.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A fault decorator: reports get lost, come twice, or come late and so in another order,
/// by chance drawn from a seed.
class FaultyReports : public ReconfigurationReports {
public:
    /// Each out of 100 reports.
    struct Faults {
        unsigned lost = 0;
        unsigned doubled = 0;
        unsigned late = 0;
        /// How late a late one is at most.
        std::chrono::milliseconds delay{0};
    };

    /// Both must outlive it.
    FaultyReports(ReconfigurationReports& inner, SimulatedScheduler& scheduler, std::uint64_t seed);
    ~FaultyReports() override;

    FaultyReports(const FaultyReports&) = delete;
    FaultyReports& operator=(const FaultyReports&) = delete;

    void setFaults(const Faults& faults) { faults_ = faults; }

    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    static void receive(DisplayID display, std::uint32_t flags, void* userInfo);
    bool happens(unsigned outOfHundred);
    void passOn(DisplayID display, std::uint32_t flags);
    void deliver(DisplayID display, std::uint32_t flags);

    ReconfigurationReports& inner_;
    SimulatedScheduler& scheduler_;
    std::mt19937_64 random_;
    Faults faults_;
    std::vector<std::pair<DisplayReconfigurationCallback, void*>> callbacks_;
};

}  // namespace tavrel
