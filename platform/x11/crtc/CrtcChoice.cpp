#include "platform/x11/crtc/CrtcChoice.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

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
        if (crtc != nullptr && !snapshot.isFree(*crtc) && shows(*crtc) &&
            std::all_of(crtc->outputs.begin(), crtc->outputs.end(), isClone)) {
            return crtc;
        }
    }
    return nullptr;
}

/// What a CRTC shows, or is to show; `setting` names the one that shows it now, if any.
struct Picture {
    CrtcSetting setting;
    Transform transform;
};

bool canShow(const Snapshot& snapshot, const Crtc& crtc, const Picture& picture) {
    return (picture.setting.rotation & ~crtc.supportedRotations) == 0 &&
           (picture.transform.isIdentity() || crtc.supportsTransforms) &&
           std::all_of(picture.setting.outputs.begin(), picture.setting.outputs.end(), [&](Xid id) {
               const Output* output = snapshot.output(id);
               return output != nullptr && contains(output->crtcs, crtc.id);
           });
}

/// The CRTCs that can show it; those that are off first, then those that drive nobody's
/// monitor, then those that are in use.
std::vector<const Crtc*> crtcsFor(const Snapshot& snapshot, const Picture& picture) {
    std::vector<const Crtc*> able;
    const Output* first = snapshot.output(picture.setting.outputs.front());
    for (const Xid id : first == nullptr ? std::vector<Xid>{} : first->crtcs) {
        const Crtc* crtc = snapshot.crtc(id);
        if (crtc != nullptr && canShow(snapshot, *crtc, picture)) {
            able.push_back(crtc);
        }
    }
    const auto use = [&](const Crtc* crtc) {
        return std::pair(!snapshot.isFree(*crtc), crtc->mode != 0);
    };
    std::ranges::stable_sort(able, {}, use);
    return able;
}

void show(const Picture& picture, const Crtc& crtc, CrtcChoice& choice) {
    const bool bothPlain = crtc.transform.isIdentity() && picture.transform.isIdentity();
    if (crtc.supportsTransforms && !bothPlain && crtc.transform != picture.transform) {
        choice.transforms.push_back({.crtc = crtc.id, .transform = picture.transform});
    }
    if (picture.setting.crtc != 0) {
        // No output can be driven twice.
        choice.settings.push_back({.crtc = picture.setting.crtc});
    }
    CrtcSetting setting = picture.setting;
    setting.crtc = crtc.id;
    choice.settings.push_back(std::move(setting));
}

/// Finds a CRTC for `picture`, and for what that one shows another, and so on until one is
/// free; of `tried`, none is looked at again. Returns false when there is no such chain.
bool findPlace(const Snapshot& snapshot, const Picture& picture, std::set<Xid>& tried,
               CrtcChoice& choice) {
    for (const Crtc* crtc : crtcsFor(snapshot, picture)) {
        if (!tried.insert(crtc->id).second) {
            continue;
        }
        const Picture shown{.setting = settingOf(*crtc), .transform = crtc->transform};
        if (snapshot.isFree(*crtc) || findPlace(snapshot, shown, tried, choice)) {
            show(picture, *crtc, choice);
            return true;
        }
    }
    return false;
}

CrtcChoice share(const Crtc& crtc, const Output& output) {
    CrtcSetting setting = settingOf(crtc);
    setting.outputs.push_back(output.id);
    return {.settings = {std::move(setting)}};
}

}  // namespace

std::vector<CrtcChoice> crtcChoices(const Snapshot& snapshot, const Output& output,
                                    const layout::Shown& wanted, const CrtcNotes& notes) {
    const Xid mode = modeLike(snapshot, output, wanted.mode, notes.modeHint);
    if (mode == 0) {
        return {};
    }
    const CrtcSetting setting{.mode = mode,
                              .x = wanted.area.x,
                              .y = wanted.area.y,
                              .rotation = wanted.rotation,
                              .outputs = {output.id}};
    const Picture picture{.setting = setting, .transform = notes.transform};
    std::vector<CrtcChoice> choices;
    const auto add = [&](const Crtc& crtc, CrtcChoice choice) {
        const bool isOldOne = crtc.id == notes.crtcHint;
        choices.insert(isOldOne ? choices.begin() : choices.end(), std::move(choice));
    };
    for (const Crtc* crtc : crtcsFor(snapshot, picture)) {
        if (snapshot.isFree(*crtc)) {
            CrtcChoice choice;
            show(picture, *crtc, choice);
            add(*crtc, std::move(choice));
        }
    }
    if (const Crtc* shared = sharableCrtc(snapshot, output, wanted, notes.transform)) {
        add(*shared, share(*shared, output));
    }
    std::set<Xid> tried;
    CrtcChoice moved;
    if (choices.empty() && findPlace(snapshot, picture, tried, moved)) {
        choices.push_back(std::move(moved));
    }
    return choices;
}

}  // namespace tavrel::x11
