#include "platform/x11/snapshot/Snapshot.h"

#include <algorithm>

namespace tavrel::x11 {

namespace {

template <typename Resource>
const Resource* find(const std::vector<Resource>& all, Xid id) {
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const Resource& each) { return each.id == id; });
    return found == all.end() ? nullptr : &*found;
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
    return std::none_of(crtc.outputs.begin(), crtc.outputs.end(), [this](Xid id) {
        const Output* driven = output(id);
        return driven != nullptr && driven->connected;
    });
}

}  // namespace tavrel::x11
