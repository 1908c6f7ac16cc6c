#pragma once

#include <optional>
#include <vector>

#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

class LayoutServer;

/// What a CRTC is to show. Off when `mode` is 0; then the rest is as the server shows it
/// for a CRTC that is off.
struct CrtcSetting {
    Xid crtc = 0;
    Xid mode = 0;
    int x = 0;
    int y = 0;
    layout::Rotation rotation = layout::rotate0;
    std::vector<Xid> outputs = {};

    friend bool operator==(const CrtcSetting&, const CrtcSetting&) = default;
};

/// What the CRTC shows now.
CrtcSetting settingOf(const Crtc& crtc);

struct CrtcTransform {
    Xid crtc = 0;
    Transform transform;

    friend bool operator==(const CrtcTransform&, const CrtcTransform&) = default;
};

/// The requests that change a layout, to be made in the order of the members. What is
/// absent stays as it is.
struct LayoutPlan {
    std::optional<ScreenSize> screenBefore = {};
    std::optional<CrtcTransform> transform = {};
    std::optional<CrtcSetting> crtc = {};
    std::optional<ScreenSize> screenAfter = {};
    std::optional<Xid> primary = {};

    bool isEmpty() const { return *this == LayoutPlan(); }

    friend bool operator==(const LayoutPlan&, const LayoutPlan&) = default;
};

/// Carries out `plan`, which was made for the layout `before`, and checks that the server
/// now shows just that, with nothing else changed in between. When it does not, or refused a
/// request on the way, puts the layout back as it was and returns false. The server is to be
/// grabbed meanwhile.
bool applyPlan(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan);

}  // namespace tavrel::x11
