#pragma once

#include <atomic>
#include <optional>
#include <thread>

#include "platform/ReconfigurationReports.h"
#include "platform/ReportRegistration.h"
#include "platform/gnome/BusDisplayConfig.h"
#include "platform/layout/Layout.h"
#include "platform/layout/MonitorDirectory.h"
#include "platform/posix/WakeUp.h"

namespace tavrel {

/// The compositor's signals as reports on displays. The callback is called on a thread of this
/// object's own, one call at a time. Changes that follow each other faster than they can be
/// looked at are reported as one; nothing is sent before a change, so there are no reports of a
/// beginning. What has changed while the compositor was gone or silent is reported afterwards.
///
/// Thread-safe, but not to be destroyed from inside the callback.
class GnomeReconfigurationReports final : public ReconfigurationReports {
public:
    /// `store`, which must outlive this, says which monitor is which display. Throws
    /// std::system_error when no thread can be started.
    explicit GnomeReconfigurationReports(UserDefaults& store, GnomeOptions options = {});
    ~GnomeReconfigurationReports() override;
    GnomeReconfigurationReports(const GnomeReconfigurationReports&) = delete;
    GnomeReconfigurationReports& operator=(const GnomeReconfigurationReports&) = delete;

    /// One pair at a time: 1004 while one is registered.
    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    /// Blocks until a call on another thread has returned. May be called from inside the
    /// callback. 1001 for a pair that is not registered.
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    void run();
    void converse();
    void ask(sd_bus* bus);
    void wait(sd_bus* bus);
    void take(sd_bus_message* answer);

    static int changed(sd_bus_message* message, void* self, sd_bus_error* error);
    static int answered(sd_bus_message* message, void* self, sd_bus_error* error);

    const GnomeOptions options_;
    ReportRegistration registration_;
    layout::MonitorDirectory directory_;
    /// What was reported last.
    std::optional<layout::Layout> reported_;
    bool hasNews_ = false;
    bool isAsking_ = false;
    std::atomic<bool> isStopping_ = false;
    WakeUp wakeUp_;
    /// Last, so that it finds all the others.
    std::thread thread_;
};

}  // namespace tavrel
