#include "platform/x11/snapshot/Snapshot.h"

#include <algorithm>
#include <cstddef>

namespace tavrel::x11 {

namespace {

template <typename Resource>
const Resource* find(const std::vector<Resource>& all, Xid id) {
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const Resource& each) { return each.id == id; });
    return found == all.end() ? nullptr : &*found;
}

/// RandR sends places as signed 16-bit numbers, whatever the server's largest screen.
constexpr int largestCoordinate = 32767;

layout::Identity identityOf(const Output& output) {
    // A driver may go on showing the EDID of a monitor that has been unplugged; by now that may
    // be at another connector.
    return {output.name, output.connected ? output.edid : layout::EdidNumbers()};
}

layout::Output describe(const Snapshot& snapshot, const Output& output) {
    layout::Output described{.identity = identityOf(output),
                             .isConnected = output.connected,
                             .monitor = output.monitor,
                             .isBuiltIn = layout::isBuiltInConnector(output.name)};
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

const Output* Snapshot::output(Xid id) const {
    return find(outputs, id);
}

const Crtc* Snapshot::crtc(Xid id) const {
    return find(crtcs, id);
}

const Mode* Snapshot::mode(Xid id) const {
    return find(modes, id);
}

const Crtc* Snapshot::activeCrtc(const Output& output) const {
    const Crtc* driving = crtc(output.crtc);
    return driving != nullptr && driving->mode != 0 ? driving : nullptr;
}

bool Snapshot::isFree(const Crtc& crtc) const {
    if (crtc.mode == 0) {
        return true;
    }
    return std::none_of(crtc.outputs.begin(), crtc.outputs.end(), [this](Xid id) {
        const Output* driven = output(id);
        return driven != nullptr && driven->connected;
    });
}

layout::Layout layoutOf(const Snapshot& snapshot) {
    layout::Layout layout{.maxWidth = std::min(snapshot.maxWidth, largestCoordinate),
                          .maxHeight = std::min(snapshot.maxHeight, largestCoordinate)};
    for (const Output& output : snapshot.outputs) {
        layout.outputs.push_back(describe(snapshot, output));
    }
    layout::numberOutputs(layout, snapshot.known);
    if (snapshot.primary.has_value()) {
        layout.primary = 0;
    }
    for (std::size_t i = 0; i < snapshot.outputs.size(); ++i) {
        if (snapshot.primary == snapshot.outputs[i].id) {
            layout.primary = layout.outputs[i].display;
        }
    }
    return layout;
}

std::vector<layout::Identity> identitiesIn(const Snapshot& snapshot) {
    std::vector<layout::Identity> identities;
    for (const Output& output : snapshot.outputs) {
        identities.push_back(identityOf(output));
    }
    return identities;
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
