#include "tests/platform/x11/snapshot/SnapshotBuilder.h"

#include <algorithm>
#include <ostream>
#include <stdexcept>

#include "platform/x11/snapshot/Snapshot.h"

namespace tavrel::x11 {

namespace {

constexpr Xid firstOutput = 100;
constexpr Xid firstCrtc = 10;
constexpr layout::Rotation allTurns = 0x3F;

Mode makeMode(Xid id, int width, int height) {
    const int clock = width * height * 60;
    const int fullWidth = width + 100;
    const int fullHeight = height + 40;
    return {.id = id,
            .description = {
                .width = width,
                .height = height,
                .refreshMillihertz = layout::refreshMillihertz(clock, fullWidth * fullHeight),
                .timings = {clock, 0, 0, fullWidth, 0, 0, 0, fullHeight, 0}}};
}

}  // namespace

SnapshotBuilder::SnapshotBuilder() {
    snapshot_.modes = {makeMode(mode::fullHd, 1920, 1080), makeMode(mode::small, 1280, 1024),
                       makeMode(mode::huge, 3840, 2160)};
    snapshot_.primary = 0;
    snapshot_.minWidth = 64;
    snapshot_.minHeight = 64;
    limits(32767, 32767);
}

Crtc& SnapshotBuilder::crtc(Xid id) {
    return *std::find_if(snapshot_.crtcs.begin(), snapshot_.crtcs.end(),
                         [id](const Crtc& each) { return each.id == id; });
}

SnapshotBuilder& SnapshotBuilder::output(const std::string& name) {
    const auto index = static_cast<Xid>(snapshot_.outputs.size());
    Output& output = snapshot_.outputs.emplace_back();
    output.id = firstOutput + index;
    output.name = name;
    output.connected = true;
    output.crtcs = {firstCrtc + index};
    output.modes = {mode::fullHd, mode::small};
    snapshot_.crtcs.emplace_back().id = firstCrtc + index;
    if (snapshot_.primary == Xid{0}) {
        snapshot_.primary = output.id;
    }
    return *this;
}

SnapshotBuilder& SnapshotBuilder::disconnected() {
    current().connected = false;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::edid(layout::EdidNumbers numbers) {
    current().edid = numbers;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::modes(std::vector<Xid> modes) {
    current().modes = std::move(modes);
    return *this;
}

SnapshotBuilder& SnapshotBuilder::crtcsOf(const std::vector<std::string>& names) {
    std::vector<Xid> crtcs;
    crtcs.reserve(names.size());
    for (const std::string& name : names) {
        crtcs.push_back(outputNamed(snapshot_, name).id - firstOutput + firstCrtc);
    }
    current().crtcs = crtcs;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::rotatable() {
    crtc(current().crtcs.front()).supportedRotations = allTurns;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::on(int x, int y, Xid mode, layout::Rotation rotation) {
    const layout::Mode& shown = snapshot_.mode(mode)->description;
    Crtc& driving = crtc(current().crtcs.front());
    driving.mode = mode;
    driving.rotation = rotation;
    driving.area = layout::isSideways(rotation) ? layout::Area{x, y, shown.height, shown.width}
                                                : layout::Area{x, y, shown.width, shown.height};
    driving.outputs = {current().id};
    current().crtc = driving.id;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::clones(const std::string& other) {
    const auto original = std::find_if(snapshot_.outputs.begin(), snapshot_.outputs.end(),
                                       [&](const Output& each) { return each.name == other; });
    original->clones.push_back(current().id);
    current().clones.push_back(original->id);
    current().crtcs.push_back(original->crtc);
    current().crtc = original->crtc;
    crtc(original->crtc).outputs.push_back(current().id);
    return *this;
}

SnapshotBuilder& SnapshotBuilder::primary() {
    snapshot_.primary = current().id;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::screen(int width, int height) {
    screen_ = ScreenSize{width, height, width / 4, height / 4};
    return *this;
}

SnapshotBuilder& SnapshotBuilder::limits(int maxWidth, int maxHeight) {
    snapshot_.maxWidth = maxWidth;
    snapshot_.maxHeight = maxHeight;
    return *this;
}

SnapshotBuilder& SnapshotBuilder::withoutPrimary() {
    snapshot_.primary.reset();
    return *this;
}

Snapshot SnapshotBuilder::build() const {
    Snapshot built = snapshot_;
    const layout::Area bounds = boundsOfAll(built);
    const int width = std::max(bounds.width, built.minWidth);
    const int height = std::max(bounds.height, built.minHeight);
    built.screen = screen_.value_or(ScreenSize{width, height, width / 4, height / 4});
    return built;
}

const Output& outputNamed(const Snapshot& snapshot, const std::string& name) {
    for (const Output& output : snapshot.outputs) {
        if (output.name == name) {
            return output;
        }
    }
    throw std::out_of_range("no output " + name);
}

DisplayID displayNamed(const Snapshot& snapshot, const std::string& name) {
    for (const layout::Output& output : layoutOf(snapshot).outputs) {
        if (output.identity.connector == name) {
            return output.display;
        }
    }
    throw std::out_of_range("no output " + name);
}

std::optional<layout::Area> areaOf(const Snapshot& snapshot, const std::string& name) {
    const Crtc* crtc = snapshot.activeCrtc(outputNamed(snapshot, name));
    return crtc == nullptr ? std::nullopt : std::optional(crtc->area);
}

layout::Area boundsOfAll(const Snapshot& snapshot) {
    layout::Area bounds;
    for (const Crtc& crtc : snapshot.crtcs) {
        if (crtc.mode != 0) {
            bounds.width = std::max(bounds.width, crtc.area.right());
            bounds.height = std::max(bounds.height, crtc.area.bottom());
        }
    }
    return bounds;
}

void PrintTo(const ScreenSize& size, std::ostream* out) {
    *out << size.width << 'x' << size.height << " (" << size.widthInMillimetres << " mm x "
         << size.heightInMillimetres << " mm)";
}

void PrintTo(const Snapshot& snapshot, std::ostream* out) {
    PrintTo(snapshot.screen, out);
    for (const Output& output : snapshot.outputs) {
        *out << "\n  " << output.name << (output.connected ? "" : " disconnected")
             << (snapshot.primary == output.id ? " primary" : "");
        if (const Crtc* crtc = snapshot.activeCrtc(output); crtc != nullptr) {
            *out << " by " << crtc->id << " mode " << crtc->mode << " turned " << crtc->rotation
                 << ' ';
            PrintTo(crtc->area, out);
        }
    }
}

std::string primaryOf(const Snapshot& snapshot) {
    const Output* output = snapshot.output(snapshot.primary.value_or(0));
    return output == nullptr ? "" : output->name;
}

}  // namespace tavrel::x11

namespace tavrel::layout {

void PrintTo(const Area& area, std::ostream* out) {
    *out << area.width << 'x' << area.height << '+' << area.x << '+' << area.y;
}

}  // namespace tavrel::layout
