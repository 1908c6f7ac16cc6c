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
    /// CRTCs that drive nobody's monitor and are in the way. To be switched off, but it is no
    /// failure when one stays on.
    std::vector<Xid> unseen = {};
    std::optional<ScreenSize> screenBefore = {};
    std::vector<CrtcTransform> transforms = {};
    /// One after the other; a CRTC may be switched off before it gets another setting.
    std::vector<CrtcSetting> crtcs = {};
    std::optional<ScreenSize> screenAfter = {};
    std::optional<Xid> primary = {};

    /// The output that is to come on, by the last of `crtcs`; 0 when one goes off.
    Xid comesOn = 0;

    friend bool operator==(const LayoutPlan&, const LayoutPlan&) = default;
};

/// Carries out `plan`, which was made for the layout `before`, and checks what the server shows
/// now. When it is not what was planned, puts the layout back as it was and returns false. The
/// server is to be grabbed meanwhile.
///
/// Where an output goes off, all must be as planned, with nothing else changed in between.
/// Where one comes on, it is enough that it is driven as asked: whatever else has changed, or
/// was refused, is no reason to switch it off again. And where nothing was to be seen before,
/// it is enough that it is driven at all.
bool applyPlan(LayoutServer& server, const Snapshot& before, const LayoutPlan& plan);

}  // namespace tavrel::x11
