#include "platform/x11/X11ReconfigurationReports.h"

#include <xcb/randr.h>

#include <utility>

#include "platform/layout/LayoutDiff.h"
#include "platform/x11/snapshot/Snapshot.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel {

X11ReconfigurationReports::X11ReconfigurationReports(UserDefaults& store,
                                                     const X11ServerOptions& options)
    : directory_(store), thread_(options, *this) {}

ServerStatus X11ReconfigurationReports::registerCallback(DisplayReconfigurationCallback callback,
                                                         void* userInfo) {
    if (!canWatch_) {
        return serverStatus::notImplemented;
    }
    return registration_.add(callback, userInfo);
}

ServerStatus X11ReconfigurationReports::removeCallback(DisplayReconfigurationCallback callback,
                                                       void* userInfo) {
    return registration_.remove(callback, userInfo);
}

void X11ReconfigurationReports::connected(x11::Connection& connection) {
    canWatch_ = connection.hasRandr();
    if (canWatch_) {
        connection.selectRandrEvents(XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE |
                                     XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                                     XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
        // What changed while there was no connection is news too.
        hasNews_ = true;
        settled(connection);
    }
}

void X11ReconfigurationReports::received(x11::Connection& connection,
                                         const xcb_generic_event_t& event) {
    hasNews_ = hasNews_ || connection.isRandrEvent(event);
}

void X11ReconfigurationReports::settled(x11::Connection& connection) {
    if (!std::exchange(hasNews_, false)) {
        return;
    }
    auto now = x11::readSnapshot(connection, x11::Probing::onContradiction);
    if (!now.has_value()) {
        return;
    }
    now->known = directory_.meet(x11::identitiesIn(*now));
    const auto before = std::exchange(reported_, x11::layoutOf(*now));
    if (!before.has_value()) {
        return;
    }
    for (const auto& change : layout::reportsBetween(*before, *reported_)) {
        registration_.report(change.display, change.flags);
    }
}

}  // namespace tavrel
