#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <thread>

#include "platform/ReconfigurationReports.h"
#include "platform/ReportRegistration.h"
#include "platform/layout/Layout.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/plasma/connection/ServerLink.h"
#include "platform/posix/WakeUp.h"

namespace tavrel {

/// What Plasma says of its outputs, unasked, as reports on displays. The callback is called on
/// a thread of this object's own, one call at a time. Changes that follow each other faster
/// than they can be looked at are reported as one; what changed while the connection was lost
/// is reported when there is one again.
///
/// Plasma says nothing before a change, so there are no reports of a beginning.
/// Thread-safe, but not to be destroyed from inside the callback.
class PlasmaReconfigurationReports final : public ReconfigurationReports {
public:
    /// Blocks until the server has answered, at most for the options' timeout. `store`, which must
    /// outlive this, says which monitor is which display. Throws std::system_error when no thread
    /// can be started.
    explicit PlasmaReconfigurationReports(UserDefaults& store,
                                          const PlasmaServerOptions& options = {});
    /// Blocks until a call of the callback has returned.
    ~PlasmaReconfigurationReports() override;
    PlasmaReconfigurationReports(const PlasmaReconfigurationReports&) = delete;
    PlasmaReconfigurationReports& operator=(const PlasmaReconfigurationReports&) = delete;

    /// One pair at a time: 1004 while one is registered. 1006 when there was no Plasma server at
    /// the beginning.
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    void run();
    void reportNews(const plasma::Session& session);
    void wait(const plasma::Session* session) const;

    ReportRegistration registration_;
    layout::MonitorDirectory directory_;
    std::atomic<bool> isStopping_ = false;
    std::atomic<bool> canWatch_ = false;
    /// What was reported last, also of a server that has gone away since.
    std::optional<layout::Layout> reported_;
    std::uint64_t changesReported_ = 0;
    /// For the end.
    WakeUp wakeUp_;
    plasma::ServerLink link_;
    /// Last, so that it begins after all that it uses.
    std::thread thread_;
};

}  // namespace tavrel
