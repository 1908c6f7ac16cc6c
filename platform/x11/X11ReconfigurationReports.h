#pragma once

#include <atomic>
#include <optional>

#include "platform/ReconfigurationReports.h"
#include "platform/ReportRegistration.h"
#include "platform/layout/Layout.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/x11/connection/EventThread.h"

namespace tavrel {

/// RandR's events as reports on displays. The callback is called on a thread of this object's
/// own, one call at a time. Changes that follow each other faster than they can be looked at
/// are reported as one.
///
/// RandR sends nothing before a change, so there are no reports of a beginning.
/// Thread-safe, but not to be destroyed from inside the callback.
class X11ReconfigurationReports final : public ReconfigurationReports,
                                        private x11::EventThread::Client {
public:
    /// Blocks at most for the options' timeout. `store`, which must outlive this, says which
    /// monitor is which display.
    explicit X11ReconfigurationReports(UserDefaults& store, const X11ServerOptions& options = {});

    /// One pair at a time: 1004 while one is registered. 1006 without a server that has
    /// RandR 1.3.
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    /// Blocks until a call on another thread has returned. May be called from inside the
    /// callback. 1001 for a pair that is not registered.
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    void connected(x11::Connection& connection) override;
    void received(x11::Connection& connection, const xcb_generic_event_t& event) override;
    void settled(x11::Connection& connection) override;

    ReportRegistration registration_;
    layout::MonitorDirectory directory_;
    /// What was reported last, also of a server that has gone away since.
    std::optional<layout::Layout> reported_;
    bool hasNews_ = false;
    std::atomic<bool> canWatch_ = false;
    /// Last, so that it ends before anything it uses.
    x11::EventThread thread_;
};

}  // namespace tavrel
