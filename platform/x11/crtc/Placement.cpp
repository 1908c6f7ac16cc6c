#include "platform/x11/crtc/Placement.h"

#include <algorithm>
#include <utility>

#include "platform/x11/crtc/ScreenFit.h"

namespace tavrel::x11 {

namespace {

constexpr Rotation sideways = 2 | 8;

bool contains(const std::vector<Xid>& list, Xid id) {
    return std::find(list.begin(), list.end(), id) != list.end();
}

bool canShow(const Crtc& crtc, Rotation rotation, const Transform& transform) {
    return (rotation & ~crtc.supportedRotations) == 0 &&
           (transform.isIdentity() || crtc.supportsTransforms);
}

/// A CRTC that can drive `output` this way and drives nothing; `hint` if that is one.
const Crtc* freeCrtc(const Snapshot& snapshot, const Output& output, Rotation rotation,
                     const Transform& transform, Xid hint) {
    const Crtc* first = nullptr;
    for (const Xid id : output.crtcs) {
        const Crtc* crtc = snapshot.crtc(id);
        if (crtc == nullptr || crtc->mode != 0 || !crtc->outputs.empty() ||
            !canShow(*crtc, rotation, transform)) {
            continue;
        }
        if (id == hint) {
            return crtc;
        }
        first = first == nullptr ? crtc : first;
    }
    return first;
}

/// The output's mode with the remembered timings; 0 when it has none any more.
Xid sameMode(const Snapshot& snapshot, const Output& output, const RememberedOutput& was) {
    Xid found = 0;
    for (const Xid id : output.modes) {
        const Mode* mode = snapshot.mode(id);
        if (mode != nullptr && mode->timings == was.mode && (found == 0 || id == was.modeHint)) {
            found = id;
        }
    }
    return found;
}

bool isPlaceFree(const Snapshot& snapshot, const std::map<Xid, DisplayID>& identifiers,
                 const RememberedOutput& was) {
    return std::none_of(snapshot.outputs.begin(), snapshot.outputs.end(), [&](const Output& other) {
        const Crtc* crtc = snapshot.activeCrtc(other);
        return crtc != nullptr && overlap(crtc->area, was.area) &&
               std::find(was.mirrors.begin(), was.mirrors.end(), identifiers.at(other.id)) ==
                   was.mirrors.end();
    });
}

/// A running CRTC that shows exactly what is remembered and can drive `output` beside what
/// it drives already.
const Crtc* sharableCrtc(const Snapshot& snapshot, const Output& output,
                         const RememberedOutput& was) {
    const auto shows = [&](const Crtc& crtc) {
        const Mode* mode = snapshot.mode(crtc.mode);
        return mode != nullptr && mode->timings == was.mode && contains(output.modes, crtc.mode) &&
               crtc.area == was.area && crtc.rotation == was.rotation &&
               crtc.transform == was.transform;
    };
    const auto isClone = [&](Xid id) {
        const Output* other = snapshot.output(id);
        return other != nullptr && contains(output.clones, id) &&
               contains(other->clones, output.id);
    };
    for (const Xid id : output.crtcs) {
        const Crtc* crtc = snapshot.crtc(id);
        if (crtc != nullptr && shows(*crtc) &&
            std::all_of(crtc->outputs.begin(), crtc->outputs.end(), isClone)) {
            return crtc;
        }
    }
    return nullptr;
}

Placement onShared(const Crtc& crtc, const Output& output) {
    Placement placement{.setting = settingOf(crtc), .transform = {}, .area = crtc.area};
    placement.setting.outputs.push_back(output.id);
    return placement;
}

Placement onFree(const Crtc& crtc, const Output& output, Xid mode, const Area& area,
                 Rotation rotation, const Transform& transform) {
    Placement placement{.setting = {.crtc = crtc.id,
                                    .mode = mode,
                                    .x = area.x,
                                    .y = area.y,
                                    .rotation = rotation,
                                    .outputs = {output.id}},
                        .transform = {},
                        .area = area};
    const bool bothPlain = crtc.transform.isIdentity() && transform.isIdentity();
    if (crtc.supportsTransforms && !bothPlain && crtc.transform != transform) {
        placement.transform = CrtcTransform{.crtc = crtc.id, .transform = transform};
    }
    return placement;
}

/// Right of all that is active and level with the rightmost of it; the screen's origin when
/// nothing is.
std::pair<int, int> placeAtTheRight(const Snapshot& snapshot) {
    std::pair<int, int> place{0, 0};
    for (const Crtc& crtc : snapshot.crtcs) {
        const bool further = crtc.area.right() > place.first;
        const bool levelAndHigher = crtc.area.right() == place.first && crtc.area.y < place.second;
        if (crtc.mode != 0 && (further || levelAndHigher)) {
            place = {crtc.area.right(), crtc.area.y};
        }
    }
    return place;
}

}  // namespace

std::optional<Placement> placeAsRemembered(const Snapshot& snapshot, const Output& output,
                                           const std::map<Xid, DisplayID>& identifiers,
                                           const RememberedOutput& was) {
    const Xid mode = sameMode(snapshot, output, was);
    if (mode == 0 || !fitsLimits(snapshot, was.area) || !isPlaceFree(snapshot, identifiers, was)) {
        return std::nullopt;
    }
    const Crtc* shared = sharableCrtc(snapshot, output, was);
    const Crtc* free = freeCrtc(snapshot, output, was.rotation, was.transform, was.crtcHint);
    // Its old CRTC first, whether that drives another output now or nothing.
    if (shared != nullptr && (free == nullptr || shared->id == was.crtcHint)) {
        return onShared(*shared, output);
    }
    if (free == nullptr) {
        return std::nullopt;
    }
    return onFree(*free, output, mode, was.area, was.rotation, was.transform);
}

std::optional<Placement> placeAnew(const Snapshot& snapshot, const Output& output,
                                   const RememberedOutput* was) {
    const Mode* mode = output.modes.empty() ? nullptr : snapshot.mode(output.modes.front());
    if (mode == nullptr) {
        return std::nullopt;
    }
    Rotation rotation = was != nullptr ? was->rotation : upright;
    const Crtc* crtc = freeCrtc(snapshot, output, rotation, Transform(), 0);
    if (crtc == nullptr) {
        rotation = upright;
        crtc = freeCrtc(snapshot, output, rotation, Transform(), 0);
    }
    if (crtc == nullptr) {
        return std::nullopt;
    }
    const auto [x, y] = placeAtTheRight(snapshot);
    Area area{x, y, mode->timings.width, mode->timings.height};
    if ((rotation & sideways) != 0) {
        std::swap(area.width, area.height);
    }
    if (!fitsLimits(snapshot, area)) {
        return std::nullopt;
    }
    return onFree(*crtc, output, mode->id, area, rotation, Transform());
}

}  // namespace tavrel::x11
