#include "platform/x11/crtc/CrtcNotes.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "platform/layout/StrictReader.h"

namespace tavrel::x11 {

namespace {

using Json = nlohmann::json;

Transform readTransform(layout::StrictReader& reader, const Json& transform) {
    Transform read;
    std::vector<std::int32_t> matrix;
    reader.numbers(transform, "matrix", matrix);
    reader.check(matrix.size() == read.matrix.size());
    if (reader.isGood()) {
        std::copy(matrix.begin(), matrix.end(), read.matrix.begin());
    }
    reader.text(transform, "filter", read.filter);
    reader.numbers(transform, "parameters", read.parameters);
    return read;
}

ScreenSize readScreen(layout::StrictReader& reader, const Json& screen) {
    ScreenSize read;
    reader.number(screen, "width", read.width);
    reader.number(screen, "height", read.height);
    reader.number(screen, "widthInMillimetres", read.widthInMillimetres);
    reader.number(screen, "heightInMillimetres", read.heightInMillimetres);
    return read;
}

}  // namespace

CrtcNotes notesOn(const Snapshot& snapshot, const Crtc& crtc) {
    return {.modeHint = crtc.mode,
            .crtcHint = crtc.id,
            .transform = crtc.transform,
            .screen = snapshot.screen};
}

std::string encodeNotes(const CrtcNotes& notes) {
    const Json json = {{"modeHint", notes.modeHint},
                       {"crtcHint", notes.crtcHint},
                       {"transform",
                        {{"matrix", notes.transform.matrix},
                         {"filter", notes.transform.filter},
                         {"parameters", notes.transform.parameters}}},
                       {"screen",
                        {{"width", notes.screen.width},
                         {"height", notes.screen.height},
                         {"widthInMillimetres", notes.screen.widthInMillimetres},
                         {"heightInMillimetres", notes.screen.heightInMillimetres}}}};
    // A filter's name is the server's; whatever it holds must not stop us.
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::optional<CrtcNotes> decodeNotes(std::string_view notes) {
    const Json json = Json::parse(notes, nullptr, false);
    if (json.is_object() && json.empty()) {
        return CrtcNotes{};
    }
    layout::StrictReader reader;
    CrtcNotes read;
    reader.number(json, "modeHint", read.modeHint);
    reader.number(json, "crtcHint", read.crtcHint);
    read.transform = readTransform(reader, reader.member(json, "transform"));
    read.screen = readScreen(reader, reader.member(json, "screen"));
    return reader.isGood() ? std::optional(std::move(read)) : std::nullopt;
}

}  // namespace tavrel::x11
