#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/DisplayID.h"
#include "platform/layout/Identity.h"
#include "platform/layout/Layout.h"

namespace tavrel::x11 {

/// The server's number for one of its resources; 0 stands for none.
using Xid = std::uint32_t;

/// The size of the X screen, in pixels and in the millimetres the server pretends.
struct ScreenSize {
    int width = 0;
    int height = 0;
    int widthInMillimetres = 0;
    int heightInMillimetres = 0;

    constexpr bool hasPixelsOf(const ScreenSize& other) const {
        return width == other.width && height == other.height;
    }

    friend constexpr bool operator==(const ScreenSize&, const ScreenSize&) = default;
};

/// A mode and its number, which may change with each start of the server.
struct Mode {
    Xid id = 0;
    layout::Mode description;

    friend bool operator==(const Mode&, const Mode&) = default;
};

/// How a CRTC scales the screen to the mode: 16.16 fixed-point numbers, row by row.
struct Transform {
    std::array<std::int32_t, 9> matrix{1 << 16, 0, 0, 0, 1 << 16, 0, 0, 0, 1 << 16};
    std::string filter;
    std::vector<std::int32_t> parameters;

    bool isIdentity() const { return matrix == Transform().matrix; }

    friend bool operator==(const Transform&, const Transform&) = default;
};

struct Crtc {
    Xid id = 0;
    /// 0 when it is off; then the area is empty.
    Xid mode = 0;
    layout::Area area;
    layout::Rotation rotation = layout::rotate0;
    layout::Rotation supportedRotations = layout::rotate0;
    bool supportsTransforms = false;
    /// The one in force; of a CRTC that is off, the one its next mode will get.
    Transform transform;
    std::vector<Xid> outputs;

    friend bool operator==(const Crtc&, const Crtc&) = default;
};

struct Output {
    Xid id = 0;
    std::string name;
    bool connected = false;
    /// 0 when it is off.
    Xid crtc = 0;
    /// The CRTCs that can drive it.
    std::vector<Xid> crtcs;
    /// Best first.
    std::vector<Xid> modes;
    /// The outputs that can share a CRTC with it.
    std::vector<Xid> clones;
    layout::EdidNumbers edid;
    /// Maker and model; empty without an EDID.
    std::string monitor;

    friend bool operator==(const Output&, const Output&) = default;
};

/// All that RandR says of a screen at one moment. Plain data.
struct Snapshot {
    std::vector<Output> outputs;
    std::vector<Crtc> crtcs;
    std::vector<Mode> modes;
    /// std::nullopt where the server knows no primary output; 0 when none is primary.
    std::optional<Xid> primary;
    ScreenSize screen;
    int minWidth = 0;
    int minHeight = 0;
    int maxWidth = 0;
    int maxHeight = 0;
    /// The server's times of the last change to the layout, and to outputs and modes.
    std::uint32_t layoutTimestamp = 0;
    std::uint32_t configTimestamp = 0;
    /// Which monitor is which display. The server does not know that: whoever reads the snapshot
    /// adds it.
    layout::KnownMonitors known;

    /// Null for a number that is not in here.
    const Output* output(Xid id) const;
    const Crtc* crtc(Xid id) const;
    const Mode* mode(Xid id) const;

    /// The CRTC that drives `output` with a mode; null when it is off.
    const Crtc* activeCrtc(const Output& output) const;

    /// Whether `crtc` drives no connected output. It need not be off: X leaves it on when its
    /// monitor is unplugged. Nor, when it is off, need it name no output: a server answers for
    /// its CRTCs one by one, and may contradict itself.
    bool isFree(const Crtc& crtc) const;

    friend bool operator==(const Snapshot&, const Snapshot&) = default;
};

/// What `snapshot` shows, in the words common to all window servers. A display is an output;
/// it is on when a CRTC drives it with a mode. The outputs are in the snapshot's order.
layout::Layout layoutOf(const Snapshot& snapshot);

/// The connectors in `snapshot` and their monitors, in its order.
std::vector<layout::Identity> identitiesIn(const Snapshot& snapshot);

/// The output in `snapshot` that is this display in its layout; null when there is none.
const Output* outputOf(const Snapshot& snapshot, const layout::Layout& layout, DisplayID display);

}  // namespace tavrel::x11
