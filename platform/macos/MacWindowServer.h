#pragma once

#include <memory>
#include <mutex>

#include "platform/DisplayQueries.h"
#include "platform/DisplaySwitch.h"
#include "platform/ReconfigurationReports.h"

namespace tavrel {

/// The Mac's window server: its public answers, and its private switch and list. Each
/// question of a moment is asked of the server when it is put; of the list of all displays,
/// at most the first 64 are taken.
///
/// Changes are made one at a time.
class MacWindowServer final : public DisplaySwitch, public DisplayQueries {
public:
    /// Looks the private entry points up. Their caches have no lock, so this has to be made
    /// on the main thread before there is any thread that could use them.
    MacWindowServer();

    bool canSwitch() override;
    ServerStatus setDisplayEnabled(DisplayID display, bool enabled) override;

    std::unique_ptr<DisplayMoment> now() override;
    std::unique_ptr<DisplayMoment> nowAfterProbing() override { return now(); }

private:
    friend class MacReconfigurationReports;

    /// No change of ours is running while this is held, except one it is asked for from.
    [[nodiscard]] std::unique_lock<std::recursive_mutex> holdChanges() {
        return std::unique_lock(changing_);
    }

    /// Recursive, because the server calls back on the thread that makes the change.
    std::recursive_mutex changing_;
};

/// The window server's own reports, passed on as they are: of changes by others from the
/// main run loop, of this process's own changes on the thread that makes them, before the
/// change's call returns.
///
/// Removing is for the main thread only; then it can promise that no call is left running.
class MacReconfigurationReports final : public ReconfigurationReports {
public:
    /// `ownChanges` makes all the changes that this process makes and must outlive this.
    explicit MacReconfigurationReports(MacWindowServer& ownChanges) : ownChanges_(ownChanges) {}

    ServerStatus registerCallback(DisplayReconfigurationCallback callback, void* userInfo) override;
    ServerStatus removeCallback(DisplayReconfigurationCallback callback, void* userInfo) override;

private:
    MacWindowServer& ownChanges_;
};

}  // namespace tavrel
