#include "platform/x11/crtc/CrtcChoice.h"

#include <algorithm>
#include <vector>

namespace tavrel::x11 {

namespace {

bool contains(const std::vector<Xid>& list, Xid id) {
    return std::find(list.begin(), list.end(), id) != list.end();
}

/// The output's mode of this description; 0 when it has none any more.
Xid modeLike(const Snapshot& snapshot, const Output& output, const layout::Mode& wanted, Xid hint) {
    Xid found = 0;
    for (const Xid id : output.modes) {
        const Mode* mode = snapshot.mode(id);
        if (mode != nullptr && mode->description == wanted && (found == 0 || id == hint)) {
            found = id;
        }
    }
    return found;
}

/// A running CRTC that shows exactly `wanted` and can drive `output` beside what it drives
/// already.
const Crtc* sharableCrtc(const Snapshot& snapshot, const Output& output,
                         const layout::Shown& wanted, const Transform& transform) {
    const auto shows = [&](const Crtc& crtc) {
        const Mode* mode = snapshot.mode(crtc.mode);
        return mode != nullptr && mode->description == wanted.mode &&
               contains(output.modes, crtc.mode) && crtc.area == wanted.area &&
               crtc.rotation == wanted.rotation && crtc.transform == transform;
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

/// A CRTC that can drive `output` this way and drives nothing; `hint` if that is one.
const Crtc* freeCrtc(const Snapshot& snapshot, const Output& output, layout::Rotation rotation,
                     const Transform& transform, Xid hint) {
    const auto canShow = [&](const Crtc& crtc) {
        return crtc.mode == 0 && crtc.outputs.empty() &&
               (rotation & ~crtc.supportedRotations) == 0 &&
               (transform.isIdentity() || crtc.supportsTransforms);
    };
    const Crtc* first = nullptr;
    for (const Xid id : output.crtcs) {
        const Crtc* crtc = snapshot.crtc(id);
        if (crtc == nullptr || !canShow(*crtc)) {
            continue;
        }
        if (id == hint) {
            return crtc;
        }
        first = first == nullptr ? crtc : first;
    }
    return first;
}

CrtcChoice share(const Crtc& crtc, const Output& output) {
    CrtcChoice choice{.setting = settingOf(crtc)};
    choice.setting.outputs.push_back(output.id);
    return choice;
}

CrtcChoice use(const Crtc& crtc, const Output& output, Xid mode, const layout::Shown& wanted,
               const Transform& transform) {
    CrtcChoice choice{.setting = {.crtc = crtc.id,
                                  .mode = mode,
                                  .x = wanted.area.x,
                                  .y = wanted.area.y,
                                  .rotation = wanted.rotation,
                                  .outputs = {output.id}}};
    const bool bothPlain = crtc.transform.isIdentity() && transform.isIdentity();
    if (crtc.supportsTransforms && !bothPlain && crtc.transform != transform) {
        choice.transform = CrtcTransform{.crtc = crtc.id, .transform = transform};
    }
    return choice;
}

}  // namespace

std::optional<CrtcChoice> chooseCrtc(const Snapshot& snapshot, const Output& output,
                                     const layout::Shown& wanted, const CrtcNotes& notes) {
    const Xid mode = modeLike(snapshot, output, wanted.mode, notes.modeHint);
    if (mode == 0) {
        return std::nullopt;
    }
    const Crtc* shared = sharableCrtc(snapshot, output, wanted, notes.transform);
    const Crtc* free = freeCrtc(snapshot, output, wanted.rotation, notes.transform, notes.crtcHint);
    if (shared != nullptr && (free == nullptr || shared->id == notes.crtcHint)) {
        return share(*shared, output);
    }
    return free == nullptr ? std::nullopt
                           : std::optional(use(*free, output, mode, wanted, notes.transform));
}

}  // namespace tavrel::x11
