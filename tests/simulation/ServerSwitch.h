#pragma once

#include <algorithm>
#include <cstddef>
#include <map>

#include "platform/LastDisplayGate.h"
#include "platform/LidAwareDisplays.h"
#include "tests/simulated/SimulatedLid.h"
#include "tests/simulated/SimulatedWindowServer.h"

namespace tavrel::simulation {

/// The window server as those see it who change it, all of them: it decides about the last
/// display at the moment of the change, whoever asks. Notes when that went wrong.
class ServerSwitch : public DisplaySwitch {
public:
    /// Both must outlive it.
    ServerSwitch(SimulatedWindowServer& server, SimulatedLid& lid)
        : server_(server), queries_(server, lid) {}

    bool canSwitch() override { return gate_.canSwitch(); }

    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override {
        const bool wasUsable = isSomethingUsable();
        const ServerStatus status = gate_.setDisplayEnabled(display, enabled);
        if (!enabled && status == serverStatus::success) {
            ++switchOffs_[display];
            // A server that cannot say what is on cannot decide either.
            leftNothingOn_ = leftNothingOn_ || (wasUsable && !isSomethingUsable() &&
                                                server_.now()->onlineDisplays().has_value());
        }
        return status;
    }

    /// Whether a change has ever switched off the last usable display.
    bool leftNothingOn() const { return leftNothingOn_; }
    /// How often the display has been switched off.
    std::size_t switchOffs(DisplayID display) const {
        const auto found = switchOffs_.find(display);
        return found == switchOffs_.end() ? 0 : found->second;
    }

private:
    bool isSomethingUsable() {
        const auto moment = queries_.now();
        const auto& desk = server_.desk();
        return std::any_of(desk.begin(), desk.end(), [&](const SimulatedDisplay& display) {
            return moment->isOnline(display.id) && moment->isActive(display.id);
        });
    }

    SimulatedWindowServer& server_;
    LidAwareQueries queries_;
    LastDisplayGate gate_{server_, queries_};
    std::map<DisplayID, std::size_t> switchOffs_;
    bool leftNothingOn_ = false;
};

}  // namespace tavrel::simulation
