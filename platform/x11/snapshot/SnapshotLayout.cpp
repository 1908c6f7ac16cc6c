#include "platform/x11/snapshot/SnapshotLayout.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tavrel::x11 {

namespace {

/// RandR sends places as signed 16-bit numbers, whatever the server's largest screen.
constexpr int largestCoordinate = 32767;

layout::Output describe(const Snapshot& snapshot, const Output& output) {
    layout::Output described{.identity = {output.name, output.edid},
                             .isConnected = output.connected};
    for (const Xid id : output.modes) {
        if (const Mode* mode = snapshot.mode(id); mode != nullptr) {
            described.modes.push_back(mode->description);
        }
    }
    if (const Crtc* crtc = snapshot.activeCrtc(output); crtc != nullptr) {
        const Mode* mode = snapshot.mode(crtc->mode);
        described.shown = {.mode = mode != nullptr ? mode->description : layout::Mode{},
                           .area = crtc->area,
                           .rotation = crtc->rotation};
    }
    return described;
}

}  // namespace

layout::Layout layoutOf(const Snapshot& snapshot) {
    layout::Layout layout{.maxWidth = std::min(snapshot.maxWidth, largestCoordinate),
                          .maxHeight = std::min(snapshot.maxHeight, largestCoordinate)};
    std::vector<layout::Identity> identities;
    for (const Output& output : snapshot.outputs) {
        layout.outputs.push_back(describe(snapshot, output));
        identities.push_back(layout.outputs.back().identity);
    }
    const std::vector<DisplayID> displays = layout::displayIdentifiers(identities);
    if (snapshot.primary.has_value()) {
        layout.primary = 0;
    }
    for (std::size_t i = 0; i < displays.size(); ++i) {
        layout.outputs[i].display = displays[i];
        if (snapshot.primary == snapshot.outputs[i].id) {
            layout.primary = displays[i];
        }
    }
    return layout;
}

const Output* outputOf(const Snapshot& snapshot, const layout::Layout& layout, DisplayID display) {
    for (std::size_t i = 0; i < layout.outputs.size(); ++i) {
        if (layout.outputs[i].display == display) {
            return &snapshot.outputs.at(i);
        }
    }
    return nullptr;
}

}  // namespace tavrel::x11
