#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/layout/Layout.h"
#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

/// Modes every server built here has.
namespace mode {
inline constexpr Xid fullHd = 1000;  // 1920×1080
inline constexpr Xid small = 1001;   // 1280×1024
inline constexpr Xid huge = 1002;    // 3840×2160
}  // namespace mode

/// Builds snapshots for tests. The calls after `output` are about that one.
///
/// Unless said otherwise, an output is connected, off, prefers 1920×1080, and has one CRTC of
/// its own; the first is primary; and the screen just holds what is on.
class SnapshotBuilder {
public:
    SnapshotBuilder();

    SnapshotBuilder& output(const std::string& name);
    SnapshotBuilder& disconnected();
    SnapshotBuilder& edid(layout::EdidNumbers numbers);
    /// Best first.
    SnapshotBuilder& modes(std::vector<Xid> modes);
    /// By the names of the outputs whose own they are.
    SnapshotBuilder& crtcsOf(const std::vector<std::string>& names);
    SnapshotBuilder& rotatable();
    SnapshotBuilder& on(int x, int y, Xid mode = mode::fullHd,
                        layout::Rotation rotation = layout::rotate0);
    /// Shares the CRTC of an output that is on; both can be clones from now on.
    SnapshotBuilder& clones(const std::string& other);
    SnapshotBuilder& primary();

    /// Room for what is on, and more.
    SnapshotBuilder& screen(int width, int height);
    SnapshotBuilder& limits(int maxWidth, int maxHeight);
    SnapshotBuilder& withoutPrimary();

    Snapshot build() const;

private:
    Output& current() { return snapshot_.outputs.back(); }
    Crtc& crtc(Xid id);

    Snapshot snapshot_;
    std::optional<ScreenSize> screen_;
};

/// The output of that name, which must be in there.
const Output& outputNamed(const Snapshot& snapshot, const std::string& name);
DisplayID displayNamed(const Snapshot& snapshot, const std::string& name);
/// Where the output of that name is; std::nullopt when it is off.
std::optional<layout::Area> areaOf(const Snapshot& snapshot, const std::string& name);
/// The smallest part of the screen from its origin that holds every CRTC that is on.
layout::Area boundsOfAll(const Snapshot& snapshot);

/// So that a failed comparison can be read.
void PrintTo(const ScreenSize& size, std::ostream* out);
void PrintTo(const Snapshot& snapshot, std::ostream* out);

/// The name of the primary output; empty when there is none.
std::string primaryOf(const Snapshot& snapshot);

}  // namespace tavrel::x11

namespace tavrel::layout {
void PrintTo(const Area& area, std::ostream* out);
}  // namespace tavrel::layout
