#pragma once

#include <cstdint>
#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/crtc/LayoutServer.h"
#include "platform/x11/snapshot/SnapshotReader.h"

namespace tavrel::x11 {

/// The real server, over a connection that is the caller's and outlives this.
class RandrLayoutServer : public LayoutServer {
public:
    /// `probing` is for what is asked before the server is grabbed. While it is, all others wait,
    /// and it is never made to look for monitors.
    /// Whatever is read tells monitors by those that are `known`.
    explicit RandrLayoutServer(Connection& connection, Probing probing = Probing::never,
                               layout::KnownMonitors known = {});

    void lookForMonitors() override;
    std::optional<Snapshot> read() override;
    bool grab() override;
    void ungrab() override;
    bool setScreenSize(const ScreenSize& size) override;
    bool setTransform(const CrtcTransform& transform) override;
    bool setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) override;
    bool setPrimary(Xid output) override;
    bool isLost() const override;

private:
    Connection& connection_;
    Probing probing_;
    const layout::KnownMonitors known_;
    bool isGrabbed_ = false;
    /// What was read last, or what there is as far as the last look for monitors has shown.
    std::optional<Snapshot> last_;
};

}  // namespace tavrel::x11
