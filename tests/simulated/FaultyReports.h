#pragma once

#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/ReconfigurationReports.h"
#include "tests/simulated/Chance.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A fault decorator: reports are lost, come twice, or come late and so in another order, at
/// random.
class FaultyReports : public ReconfigurationReports {
public:
    /// How many of 100 reports.
    struct Faults {
        unsigned lost = 0;
        unsigned doubled = 0;
        unsigned late = 0;
        /// The longest delay of a late one.
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
    void passOn(DisplayID display, std::uint32_t flags);
    void deliver(DisplayID display, std::uint32_t flags);

    ReconfigurationReports& inner_;
    SimulatedScheduler& scheduler_;
    Chance chance_;
    Faults faults_;
    std::vector<std::pair<DisplayReconfigurationCallback, void*>> callbacks_;
};

}  // namespace tavrel
