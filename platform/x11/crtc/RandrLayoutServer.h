#pragma once

#include <cstdint>
#include <optional>

#include "platform/x11/connection/Connection.h"
#include "platform/x11/crtc/LayoutServer.h"

namespace tavrel::x11 {

/// The real server, over a connection that is the caller's and outlives this.
class RandrLayoutServer : public LayoutServer {
public:
    explicit RandrLayoutServer(Connection& connection);

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
};

}  // namespace tavrel::x11
