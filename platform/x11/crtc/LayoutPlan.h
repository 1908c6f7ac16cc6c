#pragma once

#include <optional>
#include <vector>

#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// What a CRTC is to show. Off when `mode` is 0; then the rest is as the server shows it
/// for a CRTC that is off.
struct CrtcSetting {
    Xid crtc = 0;
    Xid mode = 0;
    int x = 0;
    int y = 0;
    Rotation rotation = upright;
    std::vector<Xid> outputs = {};

    friend bool operator==(const CrtcSetting&, const CrtcSetting&) = default;
};

struct CrtcTransform {
    Xid crtc = 0;
    Transform transform;

    friend bool operator==(const CrtcTransform&, const CrtcTransform&) = default;
};

/// The requests that change a layout, to be made in the order of the members. What is
/// absent stays as it is.
struct LayoutPlan {
    std::optional<ScreenSize> screenBefore;
    std::optional<CrtcTransform> transform;
    std::optional<CrtcSetting> crtc;
    std::optional<ScreenSize> screenAfter;
    std::optional<Xid> primary;

    bool isEmpty() const { return *this == LayoutPlan(); }

    friend bool operator==(const LayoutPlan&, const LayoutPlan&) = default;
};

/// What the CRTC shows now.
CrtcSetting settingOf(const Crtc& crtc);

/// Whether `now` is what `plan` makes of `before`, with nothing else changed in between.
bool isCarriedOut(const LayoutPlan& plan, const Snapshot& before, const Snapshot& now);

}  // namespace tavrel::x11
