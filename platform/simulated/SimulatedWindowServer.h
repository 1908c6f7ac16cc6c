#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayLifecycle.h"
#include "platform/DisplayQueries.h"
#include "platform/ReconfigurationReports.h"

namespace tavrel {

/// One display as the simulated server sees it.
struct SimulatedDisplay {
    DisplayID id = 0;
    bool builtIn = false;
    bool connected = true;
    bool enabled = true;
    std::uint32_t vendor = 1;
    std::uint32_t model = 1;
    std::uint32_t serial = 1;
};

/// A window server in memory, with the habits of real ones.
///
/// Runs under the simulated scheduler's one turn, so it has no lock. Reports are
/// delivered on the thread that drives the change, before the change's call returns.
class SimulatedWindowServer : public DisplayLifecycle,
                              public DisplayQueries,
                              public ReconfigurationReports {
public:
    /// What becomes of a display that is taken out of the layout.
    enum class WhenOff {
        /// It is still online, just not active (X11).
        staysOnline,
        /// It is gone from the public list, and with it its online state (the Mac).
        goesOffline,
    };

    explicit SimulatedWindowServer(WhenOff whenOff = WhenOff::staysOnline) : whenOff_(whenOff) {}

    // ---- The desk: what a person or another program does. Each reports as it should.

    /// Plugs in a display, new or known.
    void connect(const SimulatedDisplay& display);
    void disconnect(DisplayID display);
    /// Another program switches the display.
    void switchFromOutside(DisplayID display, bool enabled);
    /// Puts the display into this state without a word to anybody: a lost report.
    void replaceSilently(const SimulatedDisplay& display);
    /// A report about nothing that this server models (a move, a mode).
    void report(DisplayID display, std::uint32_t flags);

    /// Whether the server shows a private list, with displays that are off in it.
    void setHasPrivateList(bool hasPrivateList) { hasPrivateList_ = hasPrivateList; }
    /// Whether displays can be switched.
    void setCanControl(bool canControl) { canControl_ = canControl; }
    /// What registering a callback answers from now on.
    void setRegistrationStatus(ServerStatus status) { registrationStatus_ = status; }
    /// What the public list answers from now on.
    void setOnlineListStatus(ServerStatus status) { onlineListStatus_ = status; }

    /// Grows with each change of a display's state.
    std::uint64_t generation() const { return generation_; }

    const SimulatedDisplay* find(DisplayID display) const;
    const std::vector<SimulatedDisplay>& desk() const { return displays_; }

    /// Every `setDisplayEnabled` so far, in order, since the last call of this.
    std::vector<std::pair<DisplayID, bool>> takeChanges() { return std::exchange(changes_, {}); }
    /// How often the registry's candidates have been asked about, all queries together.
    std::uint64_t queries() const { return queries_; }
    std::size_t callbacks() const { return callbacks_.size(); }

    // ---- DisplayLifecycle
    bool canControlDisplays() override { return canControl_; }
    ServerStatus getDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                std::uint32_t* count) override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    // ---- DisplayQueries
    ServerStatus getOnlineDisplayList(std::uint32_t maxCount, DisplayID* displays,
                                      std::uint32_t* count) override;
    bool isBuiltIn(DisplayID display) override;
    bool isOnline(DisplayID display) override;
    bool isActive(DisplayID display) override;
    std::uint32_t vendorNumber(DisplayID display) override;
    std::uint32_t modelNumber(DisplayID display) override;
    std::uint32_t serialNumber(DisplayID display) override;

    // ---- ReconfigurationReports
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    using Callback = std::pair<DisplayReconfigurationCallback, void*>;

    SimulatedDisplay* known(DisplayID display);
    /// The display if it is plugged in, counting the query.
    const SimulatedDisplay* query(DisplayID display);
    bool online(const SimulatedDisplay& display) const;
    void change(SimulatedDisplay& display, bool enabled);

    WhenOff whenOff_;
    std::vector<SimulatedDisplay> displays_;
    std::vector<Callback> callbacks_;
    std::vector<std::pair<DisplayID, bool>> changes_;
    bool hasPrivateList_ = true;
    bool canControl_ = true;
    ServerStatus registrationStatus_ = serverStatus::success;
    ServerStatus onlineListStatus_ = serverStatus::success;
    std::uint64_t queries_ = 0;
    std::uint64_t generation_ = 0;
};

}  // namespace tavrel
