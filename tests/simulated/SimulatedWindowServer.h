#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
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
    DisplayHardware hardware = {};
};

/// A window server in memory that behaves like real ones.
///
/// The simulated scheduler runs one thing at a time, so it has no lock. Reports are delivered
/// on the thread that makes the change, before the call returns. A moment answers each
/// question with the state at that time.
class SimulatedWindowServer : public DisplaySwitch,
                              public DisplayQueries,
                              public ReconfigurationReports {
public:
    /// What happens to a display that is taken out of the layout.
    enum class WhenOff {
        /// It is still online, but not active (X11).
        staysOnline,
        /// It is no longer in the public list, and not online (the Mac).
        goesOffline,
    };

    explicit SimulatedWindowServer(WhenOff whenOff = WhenOff::staysOnline) : whenOff_(whenOff) {}

    // ---- The desk: what a person or another program does, with the reports it leads to.

    /// Plugs in a display, new or known.
    void connect(const SimulatedDisplay& display);
    void disconnect(DisplayID display);
    /// Another program switches the display.
    void switchFromOutside(DisplayID display, bool enabled);
    /// Puts the display into this state without a report, as if it had been lost.
    void replaceSilently(const SimulatedDisplay& display);
    /// A report about nothing that this server models (a move, a mode).
    void report(DisplayID display, std::uint32_t flags);

    /// Whether the server has a list of all displays, including those that are off.
    void setHasPrivateList(bool hasPrivateList) { hasPrivateList_ = hasPrivateList; }
    /// Whether displays can be switched.
    void setCanControl(bool canControl) { canControl_ = canControl; }
    /// What registering a callback returns from now on.
    void setRegistrationStatus(ServerStatus status) { registrationStatus_ = status; }
    /// Whether the server can say which displays are online.
    void setHasOnlineList(bool hasOnlineList) { hasOnlineList_ = hasOnlineList; }

    /// Grows with each change of a display's state.
    std::uint64_t generation() const { return generation_; }

    const SimulatedDisplay* find(DisplayID display) const;
    /// Whether it is online and active. Not counted as a query.
    bool isLive(DisplayID display) const;
    const std::vector<SimulatedDisplay>& desk() const { return displays_; }

    /// Every `setDisplayEnabled` so far, in order, since the last call of this.
    std::vector<std::pair<DisplayID, bool>> takeChanges() { return std::exchange(changes_, {}); }
    /// How many questions about single displays have been asked.
    std::uint64_t queries() const { return queries_; }
    /// How many moments have been asked for.
    std::uint64_t moments() const { return moments_; }
    std::size_t callbacks() const { return callbacks_.size(); }

    // ---- DisplaySwitch
    bool canSwitch() override { return canControl_; }
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    // ---- DisplayQueries
    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

    // ---- ReconfigurationReports
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    class Moment;
    using Callback = std::pair<DisplayReconfigurationCallback, void*>;

    SimulatedDisplay* known(DisplayID display);
    /// The display if it is plugged in, counting the query.
    const SimulatedDisplay* query(DisplayID display);
    bool online(const SimulatedDisplay& display) const;
    /// The identifiers of the displays for which `isListed` holds, in the desk's order.
    std::vector<DisplayID> listed(
        const std::function<bool(const SimulatedDisplay&)>& isListed) const;
    void change(SimulatedDisplay& display, bool enabled);

    WhenOff whenOff_;
    std::vector<SimulatedDisplay> displays_;
    std::vector<Callback> callbacks_;
    std::vector<std::pair<DisplayID, bool>> changes_;
    bool hasPrivateList_ = true;
    bool canControl_ = true;
    ServerStatus registrationStatus_ = serverStatus::success;
    bool hasOnlineList_ = true;
    std::uint64_t queries_ = 0;
    std::uint64_t moments_ = 0;
    std::uint64_t generation_ = 0;
};

inline void PrintTo(SimulatedWindowServer::WhenOff whenOff, std::ostream* out) {
    *out << (whenOff == SimulatedWindowServer::WhenOff::staysOnline ? "off stays online"
                                                                    : "off goes offline");
}

}  // namespace tavrel
