#pragma once

#include "platform/ReconfigurationReports.h"

namespace tavrel {

class MacWindowServer;

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
