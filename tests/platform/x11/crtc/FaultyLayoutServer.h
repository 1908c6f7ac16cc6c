#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "platform/x11/crtc/LayoutServer.h"

namespace tavrel::x11 {

/// A server with a driver that refuses some settings, or with which something happens on its
/// own at the moment a CRTC is set.
class FaultyLayoutServer : public LayoutServer {
public:
    /// `inner` must outlive it.
    explicit FaultyLayoutServer(LayoutServer& inner) : inner_(inner) {}

    void lookForMonitors() override { inner_.lookForMonitors(); }
    std::optional<Snapshot> read() override { return inner_.read(); }
    bool grab() override {
        if (beforeGrab) {
            std::exchange(beforeGrab, nullptr)();
        }
        return inner_.grab();
    }
    void ungrab() override { inner_.ungrab(); }
    bool setScreenSize(const ScreenSize& size) override {
        return !refusesScreenSizes && inner_.setScreenSize(size);
    }
    bool setTransform(const CrtcTransform& transform) override {
        return inner_.setTransform(transform);
    }
    bool setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) override {
        if (setting.mode != 0 && refuses && refuses(setting)) {
            ++refused;
            return false;
        }
        const bool taken = inner_.setCrtc(setting, configTimestamp);
        if (taken && setting.mode != 0 && afterNextCrtc) {
            std::exchange(afterNextCrtc, nullptr)();
        }
        return taken;
    }
    bool setPrimary(Xid output) override { return !refusesPrimary && inner_.setPrimary(output); }
    bool isLost() const override { return inner_.isLost(); }

    /// Which settings of a CRTC that is to show something.
    std::function<bool(const CrtcSetting&)> refuses;
    bool refusesScreenSizes = false;
    bool refusesPrimary = false;
    /// Called once, when the server is about to be grabbed.
    std::function<void()> beforeGrab;
    /// Called once, when a CRTC has begun to show something.
    std::function<void()> afterNextCrtc;
    int refused = 0;

private:
    LayoutServer& inner_;
};

}  // namespace tavrel::x11
