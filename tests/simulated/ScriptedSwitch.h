#pragma once

#include <map>

#include "platform/DisplaySwitch.h"
#include "tests/simulated/SimulatedScheduler.h"

namespace tavrel {

/// A fault decorator: refuses the displays it was told to, or is slow.
class ScriptedSwitch : public DisplaySwitch {
public:
    /// Both must outlive it.
    ScriptedSwitch(DisplaySwitch& inner, SimulatedScheduler& scheduler)
        : inner_(inner), scheduler_(scheduler) {}

    /// From now on switching `display` returns `status` and changes nothing; 0 lets it through
    /// again.
    void refuse(DisplayID display, ServerStatus status) { refusals_[display] = status; }

    /// From now on each switch takes this long before it has its effect.
    void setLatency(Delay latency) { latency_ = latency; }

    bool canSwitch() override { return inner_.canSwitch(); }

    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        if (latency_ > Delay::zero()) {
            scheduler_.sleep(latency_);
        }
        const auto refusal = refusals_.find(display);
        if (refusal != refusals_.end() && refusal->second != serverStatus::success) {
            return refusal->second;
        }
        return inner_.setDisplayEnabled(display, enabled);
    }

private:
    DisplaySwitch& inner_;
    SimulatedScheduler& scheduler_;
    std::map<DisplayID, ServerStatus> refusals_;
    Delay latency_{0};
};

}  // namespace tavrel
