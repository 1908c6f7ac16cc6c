#pragma once

#include <optional>

#include "platform/x11/crtc/LayoutPlan.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// The few requests that a change of the layout is made of. Each returns whether the
/// server carried it out. To be used by one thread at a time.
class LayoutServer {
public:
    virtual ~LayoutServer() = default;

    /// Makes the server look for monitors anew, so that what is read next knows them. Others may
    /// have to wait for that, so never while it is grabbed.
    virtual void lookForMonitors() = 0;

    /// std::nullopt when the server is gone or answers with errors.
    virtual std::optional<Snapshot> read() = 0;

    /// What is asked next is answered when the server serves nobody else any more, until it is
    /// given back. Need not wait for that itself.
    virtual bool grab() = 0;
    virtual void ungrab() = 0;

    virtual bool setScreenSize(const ScreenSize& size) = 0;
    virtual bool setTransform(const CrtcTransform& transform) = 0;
    /// `configTimestamp` is that of the snapshot the setting was decided on.
    virtual bool setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) = 0;
    virtual bool setPrimary(Xid output) = 0;

    /// Whether the server is gone, or has been silent for too long.
    virtual bool isLost() const = 0;
};

}  // namespace tavrel::x11
