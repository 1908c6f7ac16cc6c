#include "tests/platform/x11/crtc/SimulatedRandr.h"

#include <algorithm>
#include <utility>

namespace tavrel::x11 {

namespace {

bool contains(const std::vector<Xid>& list, Xid id) {
    return std::find(list.begin(), list.end(), id) != list.end();
}

template <typename Resource>
Resource* find(std::vector<Resource>& all, Xid id) {
    const auto found =
        std::find_if(all.begin(), all.end(), [id](const Resource& each) { return each.id == id; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace

void SimulatedRandr::lookForMonitors() {
    looksWithGrab += isGrabbed ? 1 : 0;
    if (newMonitors) {
        std::exchange(newMonitors, nullptr)(state);
    }
}

std::optional<Snapshot> SimulatedRandr::read() {
    if (isGrabbed && lastMinuteChange) {
        std::exchange(lastMinuteChange, nullptr)(state);
    }
    if (beforeReading) {
        beforeReading(state);
    }
    return isGone ? std::nullopt : std::optional(state);
}

bool SimulatedRandr::grab() {
    if (beforeGrab) {
        beforeGrab();
    }
    isGrabbed = !isGone;
    ++grabs;
    return isGrabbed;
}

void SimulatedRandr::ungrab() {
    isGrabbed = false;
}

bool SimulatedRandr::takes() {
    ++requests;
    requestsWithoutGrab += isGrabbed ? 0 : 1;
    const bool refused =
        firstRefusal > 0 && requests >= firstRefusal && requests < firstRefusal + refusals;
    return !refused && !isGone;
}

bool SimulatedRandr::setScreenSize(const ScreenSize& size) {
    const bool withinLimits = size.width >= state.minWidth && size.width <= state.maxWidth &&
                              size.height >= state.minHeight && size.height <= state.maxHeight;
    const bool hasExtent = size.widthInMillimetres > 0 && size.heightInMillimetres > 0;
    const bool holdsAll =
        std::all_of(state.crtcs.begin(), state.crtcs.end(), [&](const Crtc& crtc) {
            return crtc.mode == 0 ||
                   (crtc.area.right() <= size.width && crtc.area.bottom() <= size.height);
        });
    if (!takes() || !withinLimits || !hasExtent || !holdsAll) {
        return false;
    }
    state.screen = size;
    return true;
}

bool SimulatedRandr::setTransform(const CrtcTransform& wanted) {
    Crtc* crtc = find(state.crtcs, wanted.crtc);
    if (!takes() || crtc == nullptr || !crtc->supportsTransforms) {
        return false;
    }
    pendingTransforms_[wanted.crtc] = wanted.transform;
    if (crtc->mode == 0) {
        crtc->transform = wanted.transform;
    }
    return true;
}

layout::Area SimulatedRandr::areaOf(const CrtcSetting& setting) const {
    const Mode* mode = state.mode(setting.mode);
    if (mode == nullptr) {
        return {};
    }
    int width = mode->description.width;
    int height = mode->description.height;
    if (layout::isSideways(setting.rotation)) {
        std::swap(width, height);
    }
    const auto pending = pendingTransforms_.find(setting.crtc);
    const auto scale = [&](std::size_t at) {
        return pending == pendingTransforms_.end() ? 1.0 : pending->second.matrix.at(at) / 65536.0;
    };
    return {setting.x, setting.y, static_cast<int>(width * scale(0)),
            static_cast<int>(height * scale(4))};
}

bool SimulatedRandr::isShowable(const CrtcSetting& setting, const layout::Area& area) const {
    const Crtc& crtc = *state.crtc(setting.crtc);
    const bool turnable =
        layout::isRotation(setting.rotation) && (setting.rotation & ~crtc.supportedRotations) == 0;
    const bool inside = area.x >= 0 && area.y >= 0 && area.right() <= state.screen.width &&
                        area.bottom() <= state.screen.height;
    const bool drivable = std::all_of(setting.outputs.begin(), setting.outputs.end(), [&](Xid id) {
        const Output* output = state.output(id);
        return output != nullptr && contains(output->crtcs, setting.crtc) &&
               contains(output->modes, setting.mode) &&
               (output->crtc == 0 || output->crtc == setting.crtc) &&
               std::all_of(setting.outputs.begin(), setting.outputs.end(), [&](Xid other) {
                   return other == id || contains(output->clones, other);
               });
    });
    return turnable && inside && drivable && !setting.outputs.empty() &&
           state.mode(setting.mode) != nullptr;
}

bool SimulatedRandr::setCrtc(const CrtcSetting& setting, std::uint32_t configTimestamp) {
    Crtc* crtc = find(state.crtcs, setting.crtc);
    const layout::Area area = areaOf(setting);
    if (!takes() || crtc == nullptr || configTimestamp != state.configTimestamp ||
        (setting.mode == 0 ? !setting.outputs.empty() : !isShowable(setting, area))) {
        return false;
    }
    if (ignoresCrtcs) {
        return true;
    }
    for (const Xid id : crtc->outputs) {
        find(state.outputs, id)->crtc = 0;
    }
    for (const Xid id : setting.outputs) {
        find(state.outputs, id)->crtc = setting.crtc;
    }
    crtc->mode = setting.mode;
    crtc->area = setting.mode == 0 ? layout::Area{} : area;
    crtc->rotation = setting.mode == 0 ? layout::rotate0 : setting.rotation;
    crtc->outputs = setting.outputs;
    if (const auto pending = pendingTransforms_.find(crtc->id);
        pending != pendingTransforms_.end()) {
        crtc->transform = pending->second;
    }
    return true;
}

bool SimulatedRandr::setPrimary(Xid output) {
    if (!takes() || !state.primary.has_value()) {
        return false;
    }
    state.primary = output;
    return true;
}

}  // namespace tavrel::x11
