#pragma once

#include <atomic>
#include <optional>

#include "platform/ReconfigurationReports.h"
#include "platform/x11/CallbackList.h"
#include "platform/x11/Snapshot.h"
#include "platform/x11/connection/EventThread.h"

namespace tavrel {

/// What RandR notifies of, as reports on displays. They come from a thread and a connection
/// of this object's own, one after the other. Changes that follow each other faster than
/// they can be looked at are reported as one.
///
/// RandR says nothing of a change before it is made, so no report of a beginning comes from
/// here. Thread-safe, but not to be destroyed from inside a callback.
class X11ReconfigurationReports final : public ReconfigurationReports,
                                        private x11::EventThread::Client {
public:
    /// Waits for the server at most as long as the options' patience. Without one that has
    /// RandR 1.2, registering is refused with 1006.
    explicit X11ReconfigurationReports(const X11ServerOptions& options = {});

    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    /// 1001 for a pair that is not registered.
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    void connected(x11::Connection& connection) override;
    void received(x11::Connection& connection, const xcb_generic_event_t& event) override;
    void settled(x11::Connection& connection) override;

    x11::CallbackList callbacks_;
    /// What was reported last; of a server that went away and came back, from before.
    std::optional<x11::Snapshot> reported_;
    bool hasNews_ = false;
    std::atomic<bool> canWatch_ = false;
    /// Last, so that it ends before anything it uses.
    x11::EventThread thread_;
};

}  // namespace tavrel
