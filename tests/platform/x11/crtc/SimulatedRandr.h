#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <utility>

#include "platform/x11/crtc/LayoutServer.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// A RandR server in memory that is as strict as a real one: a request that would break one
/// of RandR's rules is refused. Can be told to fail.
class SimulatedRandr : public LayoutServer {
public:
    explicit SimulatedRandr(Snapshot snapshot) : state(std::move(snapshot)) {}

    void lookForMonitors() override;
    std::optional<Snapshot> read() override;
    bool grab() override;
    void ungrab() override;
    bool setScreenSize(const ScreenSize& size) override;
    bool setTransform(const CrtcTransform& transform) override;
    bool setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) override;
    bool setPrimary(Xid output) override;
    bool isLost() const override { return isGone; }

    Snapshot state;
    /// From this change request on, counting from 1, so many are refused.
    int firstRefusal = 0;
    int refusals = 0;
    /// Takes the settings of CRTCs and does nothing about them.
    bool ignoresCrtcs = false;
    bool isGone = false;
    /// Called when the server is about to be grabbed.
    std::function<void()> beforeGrab;
    /// Before the first reading with the server grabbed, another client does this.
    std::function<void(Snapshot&)> lastMinuteChange;
    /// Shown once the server has been made to look for monitors.
    std::function<void(Snapshot&)> newMonitors;
    /// Called before each reading.
    std::function<void(Snapshot&)> beforeReading;

    bool isGrabbed = false;
    int grabs = 0;
    /// Change requests, refused ones included.
    int requests = 0;
    int requestsWithoutGrab = 0;
    int looksWithGrab = 0;

private:
    bool takes();
    bool isShowable(const CrtcSetting& setting, const layout::Area& area) const;
    layout::Area areaOf(const CrtcSetting& setting) const;

    std::map<Xid, Transform> pendingTransforms_;
};

}  // namespace tavrel::x11
